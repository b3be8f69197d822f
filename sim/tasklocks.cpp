// Locks: one task holds each at a time, the others wait. The highest waiting task is the next to have it.
#include <algorithm>

#include "taskrunner.h"

namespace sim {

void TaskRunner::TakeLock(const Action& action) {
  Lock& lock = locks_[action.index];
  if (lock.holder == running_) return;
  if (lock.holder == none) {
    lock.holder = running_;
    lock.takenBy = action.id;
    Running().heldLocks.push_back(action.index);
    return;
  }
  lock.waiters.push_back(running_);
  Running().awaitedLock = action.index;
  Running().awaitedBy = action.id;
  if (spec_.inheritance) InheritPriority(lock.holder, Running().priority);
  GiveWay(recordPlainSwitch);
}

// The running task gives the lock away, if it holds it, without leaving the processor yet.
void TaskRunner::ReleaseLock(uint32_t index) {
  Lock& lock = locks_[index];
  if (lock.holder != running_) return;
  std::erase(Running().heldLocks, index);
  steps_ += lock.waiters.size();
  const auto next =
      std::max_element(lock.waiters.begin(), lock.waiters.end(),
                       [this](uint32_t a, uint32_t b) { return states_[a].priority < states_[b].priority; });
  lock.holder = next == lock.waiters.end() ? none : *next;
  RestorePriority(running_);
  if (lock.holder == none) return;
  lock.waiters.erase(next);
  lock.takenBy = states_[lock.holder].awaitedBy;
  states_[lock.holder].heldLocks.push_back(index);
  states_[lock.holder].awaitedLock = none;
  Wake(lock.holder);
}

// Who waits itself passes the priority on. Each turn raises a priority, so tasks that wait for each other in
// a ring do not keep this going.
void TaskRunner::InheritPriority(uint32_t task, uint8_t priority) {
  while (states_[task].priority < priority) {
    CountStep(task);
    TaskState& state = states_[task];
    const bool isReady = ready_.Contains(task);
    if (isReady) ready_.Remove(task, state.priority);
    state.priority = priority;
    if (isReady) MakeReady(task);
    if (state.awaitedLock == none) return;
    task = locks_[state.awaitedLock].holder;
  }
}

// Back to its own priority, or to that of the highest task which waits for a lock that it still holds.
void TaskRunner::RestorePriority(uint32_t task) {
  TaskState& state = states_[task];
  state.priority = spec_.tasks[task].priority;
  if (!spec_.inheritance) return;
  for (const uint32_t index : state.heldLocks) {
    steps_ += locks_[index].waiters.size();
    for (const uint32_t waiter : locks_[index].waiters) {
      state.priority = std::max(state.priority, states_[waiter].priority);
    }
  }
}

}  // namespace sim
