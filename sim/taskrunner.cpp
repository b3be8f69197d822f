// The scheduler. At one instant the running task acts first, then the timers, all of them before the highest
// ready task gets the processor.
#include "taskrunner.h"

#include <algorithm>
#include <tuple>

namespace sim {

TaskRunner::TaskRunner(const ProcessorSpec& spec, uint64_t seed, TickClock clock, Logger& logger)
    : spec_(spec), seed_(seed), clock_(clock), logger_(logger), ready_(spec.tasks.size()) {
  Reset(0);
}

void TaskRunner::Reset(uint64_t originNs) {
  timers_.clear();
  states_.clear();
  ready_.Clear();
  nowNs_ = originNs;
  accountedNs_ = originNs;
  steps_ = 0;
  for (uint32_t task = 0; task < spec_.tasks.size(); ++task) {
    const Task& spec = spec_.tasks[task];
    // A generator of its own for each task: what one does never changes the run times of another.
    states_.emplace_back(Random(seed_ ^ (uint64_t{spec.id} << 32) ^ originNs).Next());
    if (spec.periodNs > 0) AddTimer({originNs + spec.offsetNs, TimerKind::release, task});
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
  TaskState& state = states_[running_];
  const auto& actions = RunningTask().actions;
  if (state.nextAction < actions.size() && actions[state.nextAction].atNs == state.doneNs) {
    Perform(actions[state.nextAction++]);
  } else if (state.doneNs == state.runNs) {
    EndCycle();
  } else {
    EndSlice();
  }
}

void TaskRunner::Perform(const Action& action) {
  PlanRunning();
  if (states_[running_].cycle % action.every != 0) return;
  switch (action.kind) {
    case Action::Kind::testpoint: return Record(recordTestpoint, action.id);
    case Action::Kind::issue: return Record(recordTimingIssue, action.id);
    case Action::Kind::event: return RaiseEvent(action.task);
    case Action::Kind::wait:
      AddTimer({nowNs_ + action.lastsNs, TimerKind::resume, running_});
      return GiveWay(recordPlainSwitch);
  }
}

void TaskRunner::RaiseEvent(uint32_t task) {
  Record(recordTaskEvent, spec_.tasks[task].id);
  if (spec_.tasks[task].periodNs > 0) return;
  if (states_[task].active) {
    states_[task].pending = true;
    return;
  }
  StartCycle(task);
  MakeReady(task);
  if (Preempts()) Preempt();
}

void TaskRunner::EndCycle() {
  TaskState& state = states_[running_];
  state.active = false;
  if (state.pending) {
    state.pending = false;
    StartCycle(running_);
    MakeReady(running_);
  }
  GiveWay(recordCycleDone);
}

void TaskRunner::EndSlice() {
  if (ready_.TopPriority() == RunningTask().priority) {
    MakeReady(running_);
    return GiveWay(recordSliceUsed);
  }
  states_[running_].sliceLeftNs = RunningTask().sliceNs;
  PlanRunning();
}

// ---- Timers ----

void TaskRunner::HandleTimers() {
  woken_.clear();
  while (NextTimerNs() == nowNs_) {
    const Timer timer = timers_.front();
    std::pop_heap(timers_.begin(), timers_.end(), Later);
    timers_.pop_back();
    HandleTimer(timer);
  }
  const bool preempts = Preempts();
  for (const uint32_t task : woken_) {
    if (!preempts || task != ready_.Top()) Record(recordTaskEvent, spec_.tasks[task].id);
  }
  if (preempts) Preempt();
}

void TaskRunner::HandleTimer(const Timer& timer) {
  TaskState& state = states_[timer.task];
  CountStep(timer.task);
  switch (timer.kind) {
    case TimerKind::deadline:
      state.deadlineTimed = false;
      if (!state.active) return;
      if (state.deadlineNs > nowNs_) return TimeDeadline(timer.task);  // this timer was of a cycle before
      return Record(recordTimingIssue, spec_.tasks[timer.task].lateIssue);
    case TimerKind::release:
      AddTimer({nowNs_ + spec_.tasks[timer.task].periodNs, TimerKind::release, timer.task});
      return Release(timer.task);
    case TimerKind::resume: MakeReady(timer.task); woken_.push_back(timer.task);
  }
}

// A release that finds the task still at work is lost, and a timing issue.
void TaskRunner::Release(uint32_t task) {
  // What ends at this very instant is in time, so the running task's end was handled before.
  if (states_[task].active) return Record(recordTimingIssue, spec_.tasks[task].lateIssue);
  StartCycle(task);
  MakeReady(task);
  woken_.push_back(task);
}

void TaskRunner::StartCycle(uint32_t task) {
  const Task& spec = spec_.tasks[task];
  TaskState& state = states_[task];
  ++state.cycle;
  state.active = true;
  state.doneNs = 0;
  state.nextAction = 0;
  state.sliceLeftNs = spec.sliceNs;
  state.runNs = spec.runNs;
  if (spec.jitterNs > 0) state.runNs += state.random.Below(2 * spec.jitterNs + 1) - spec.jitterNs;
  if (spec.overrunEvery > 0 && state.cycle % spec.overrunEvery == 0) state.runNs += spec.overrunByNs;
  state.deadlineNs = nowNs_ + spec.deadlineNs;
  if (spec.deadlineNs > 0 && !state.deadlineTimed) TimeDeadline(task);
}

void TaskRunner::TimeDeadline(uint32_t task) {
  AddTimer({states_[task].deadlineNs, TimerKind::deadline, task});
  states_[task].deadlineTimed = true;
}

// ---- Who has the processor ----

bool TaskRunner::Preempts() const { return ready_.TopPriority() > RunningTask().priority; }

void TaskRunner::Preempt() {
  if (running_ == Idle()) return SwitchTo(ready_.Pop(), recordFromIdle);
  const uint32_t next = ready_.Pop();
  ready_.PushFront(running_, RunningTask().priority);
  SwitchTo(next, recordPreempted);
}

// The running task leaves the processor to the next ready one, which may be itself.
void TaskRunner::GiveWay(uint32_t type) {
  const uint32_t next = ready_.TopPriority() < 0 ? Idle() : ready_.Pop();
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
  TaskState& state = states_[running_];
  state.doneNs += usedNs;
  state.sliceLeftNs -= std::min(state.sliceLeftNs, usedNs);
  accountedNs_ = nowNs_;
}

void TaskRunner::PlanRunning() {
  if (running_ == Idle()) {
    actsAtNs_ = UINT64_MAX;
    return;
  }
  const TaskState& state = states_[running_];
  const Task& spec = RunningTask();
  uint64_t leftNs = state.runNs - state.doneNs;
  if (state.nextAction < spec.actions.size()) {
    leftNs = std::min(leftNs, spec.actions[state.nextAction].atNs - state.doneNs);
  }
  if (spec.sliceNs > 0) leftNs = std::min(leftNs, state.sliceLeftNs);
  actsAtNs_ = accountedNs_ + leftNs;
}

bool TaskRunner::Later(const Timer& a, const Timer& b) {
  return std::tie(a.atNs, a.kind, a.task) > std::tie(b.atNs, b.kind, b.task);
}

void TaskRunner::AddTimer(const Timer& timer) {
  timers_.push_back(timer);
  std::push_heap(timers_.begin(), timers_.end(), Later);
}

}  // namespace sim
