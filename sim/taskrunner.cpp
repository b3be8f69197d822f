// The scheduler. At one instant the running task acts first, then the timers, all of them before the highest
// ready task gets the processor.
#include "taskrunner.h"

#include <algorithm>

namespace sim {

TaskRunner::TaskState::TaskState(const Task& spec, uint64_t taskSeed)
    : priority(spec.priority), seed(taskSeed), random(taskSeed), otherRandom(~taskSeed) {}

TaskRunner::TaskRunner(const ProcessorSpec& spec, uint64_t seed, TickClock clock, Logger& logger)
    : spec_(spec), seed_(seed), clock_(clock), logger_(logger), ready_(spec.tasks.size()) {
  Reset(0, 0);
}

void TaskRunner::Reset(uint64_t originNs, uint64_t startNs) {
  timers_.clear();
  states_.clear();
  woken_.clear();
  locks_.assign(spec_.locks.size(), Lock());
  ready_.Clear();
  startNs_ = startNs;
  nowNs_ = originNs;
  accountedNs_ = originNs;
  steps_ = 0;
  for (uint32_t task = 0; task < spec_.tasks.size(); ++task) {
    const Task& spec = spec_.tasks[task];
    // A generator of its own for each task: what one does never changes the run times of another.
    states_.emplace_back(spec, Random(seed_ ^ (uint64_t{spec.id} << 32) ^ originNs).Next());
    const uint64_t firstNs = Appears(task) ? std::max(originNs, AppearsNs(task)) : originNs;
    states_[task].dueNs = firstNs + spec.offsetNs;
    if (spec.periodNs > 0) TimeRelease(task);
  }
  running_ = Idle();
  PlanRunning();
}

bool TaskRunner::AdvanceBefore(uint64_t limitNs, uint64_t mostSteps) {
  const bool recording = logger_.Recording();
  const uint64_t lastStep = steps_ + logger_.Written() + mostSteps;
  while (logger_.Recording() == recording) {
    const uint64_t timerNs = NextTimerNs();
    const uint64_t nextNs = std::min(actsAtNs_, timerNs);
    if (nextNs >= limitNs) return true;
    if (steps_ + logger_.Written() > lastStep) return false;
    nowNs_ = nextNs;
    if (actsAtNs_ <= timerNs) {
      RunningTaskActs();
    } else {
      HandleTimers();
    }
  }
  return true;
}

const Task* TaskRunner::BusiestTask() const {
  const auto busiest =
      std::max_element(states_.begin(), states_.end(),
                       [](const TaskState& a, const TaskState& b) { return a.steps < b.steps; });
  return steps_ < logger_.Bridged() ? nullptr : &spec_.tasks[static_cast<size_t>(busiest - states_.begin())];
}

void TaskRunner::CountStep(uint32_t task) {
  ++steps_;
  ++states_[task].steps;
}

// ---- The running task ----

void TaskRunner::RunningTaskActs() {
  CountStep(running_);
  AccountRunTime();
  TaskState& state = Running();
  const auto& actions = RunningTask().actions;
  const size_t next = state.nextAction;
  if (next < actions.size() && actions[next].atNs + state.stretchedNs == state.doneNs) {
    ++state.nextAction;
    PlanRunning();
    if (Happens(actions[next].when, state, state.cycle, next)) Perform(actions[next]);
  } else if (state.doneNs == state.runNs) {
    EndCycle();
  } else {
    EndSlice();
  }
}

void TaskRunner::Perform(const Action& action) {
  switch (action.kind) {
    case Action::Kind::testpoint: return Record(recordTestpoint, action.id);
    case Action::Kind::issue: return Record(recordTimingIssue, action.id);
    case Action::Kind::event: return RaiseEvent(action.index);
    case Action::Kind::wait: return StartWait(action);
    case Action::Kind::lock: return TakeLock(action);
    case Action::Kind::unlock:
      if (locks_[action.index].takenBy == action.id) ReleaseLock(action.index);
      return PreemptIfDue();
    case Action::Kind::blockPreemption:
      if (Running().blockedBy == none) Running().blockedBy = action.id;
      return;
    case Action::Kind::allowPreemption:
      if (Running().blockedBy == action.id) Running().blockedBy = none;
      return PreemptIfDue();
    case Action::Kind::stretch:
      Running().stretchedNs += action.lastsNs;
      Running().runNs += action.lastsNs;
      return PlanRunning();
  }
}

void TaskRunner::StartWait(const Action& action) {
  TaskState& state = Running();
  uint64_t lastsNs = action.lastsNs;
  if (action.jitterNs > 0) lastsNs += state.otherRandom.Below(2 * action.jitterNs + 1) - action.jitterNs;
  // Another number than that of any action, so that the longer waits are chosen apart from the waits.
  if (Happens(action.longer.when, state, state.cycle, ~uint64_t{state.nextAction}))
    lastsNs += action.longer.byNs;
  AddTimer({nowNs_ + lastsNs, TimerKind::resume, running_});
  GiveWay(recordPlainSwitch);
}

void TaskRunner::RaiseEvent(uint32_t task) {
  if (Appears(task) && nowNs_ < AppearsNs(task)) return;
  Record(recordTaskEvent, spec_.tasks[task].id);
  if (spec_.tasks[task].periodNs > 0) return;
  if (states_[task].active) {
    states_[task].pending = true;
    return;
  }
  StartCycle(task);
  MakeReady(task);
  PreemptIfDue();
}

void TaskRunner::EndCycle() {
  TaskState& state = Running();
  state.active = false;
  state.blockedBy = none;
  while (!state.heldLocks.empty()) ReleaseLock(state.heldLocks.back());
  if (state.pending) {
    state.pending = false;
    StartCycle(running_);
    MakeReady(running_);
  }
  GiveWay(recordCycleDone);
}

void TaskRunner::EndSlice() {
  if (ready_.TopPriority() >= Running().priority && Running().blockedBy == none) {
    MakeReady(running_);
    return GiveWay(recordSliceUsed);
  }
  Running().sliceLeftNs = RunningTask().sliceNs;
  PlanRunning();
}

// ---- Who has the processor ----

// Makes a task ready that gets a record of its own unless it has the processor at once.
void TaskRunner::Wake(uint32_t task) {
  MakeReady(task);
  woken_.push_back(task);
}

void TaskRunner::RecordWoken(uint32_t next) {
  for (const uint32_t task : woken_) {
    if (task != next) Record(recordTaskEvent, spec_.tasks[task].id);
  }
  woken_.clear();
}

void TaskRunner::PreemptIfDue() {
  const bool isDue = ready_.TopPriority() > Running().priority && Running().blockedBy == none;
  RecordWoken(isDue ? ready_.Top() : none);
  if (!isDue) return;
  if (running_ == Idle()) return SwitchTo(ready_.Pop(), recordFromIdle);
  const uint32_t next = ready_.Pop();
  ready_.PushFront(running_, Running().priority);
  SwitchTo(next, recordPreempted);
}

// The running task leaves the processor to the next ready one, which may be itself.
void TaskRunner::GiveWay(uint32_t type) {
  const uint32_t next = ready_.TopPriority() < 0 ? Idle() : ready_.Pop();
  RecordWoken(next);
  if (next != running_) return SwitchTo(next, type);
  PlanRunning();
}

void TaskRunner::SwitchTo(uint32_t task, uint32_t type) {
  AccountRunTime();
  running_ = task;
  Record(type, spec_.tasks[task].id);
  if (states_[task].sliceLeftNs == 0) states_[task].sliceLeftNs = spec_.tasks[task].sliceNs;
  PlanRunning();
}

void TaskRunner::AccountRunTime() {
  const uint64_t usedNs = nowNs_ - accountedNs_;
  TaskState& state = Running();
  state.doneNs += usedNs;
  state.sliceLeftNs -= std::min(state.sliceLeftNs, usedNs);
  accountedNs_ = nowNs_;
}

void TaskRunner::PlanRunning() {
  if (running_ == Idle()) {
    actsAtNs_ = UINT64_MAX;
    return;
  }
  const TaskState& state = Running();
  const Task& spec = RunningTask();
  uint64_t leftNs = state.runNs - state.doneNs;
  if (state.nextAction < spec.actions.size()) {
    leftNs = std::min(leftNs, spec.actions[state.nextAction].atNs + state.stretchedNs - state.doneNs);
  }
  if (spec.sliceNs > 0) leftNs = std::min(leftNs, state.sliceLeftNs);
  actsAtNs_ = accountedNs_ + leftNs;
}

}  // namespace sim
