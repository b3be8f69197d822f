// What comes with time: releases, deadlines and the ends of waits; and in which cycles something happens.
#include <algorithm>
#include <tuple>

#include "taskrunner.h"

namespace sim {
namespace {

// The number that chooses among bursts, overruns and the actions of a task, which count from 0.
constexpr uint64_t burstSalt = UINT64_MAX / 2;
constexpr uint64_t overrunSalt = burstSalt + 1;

// A time that varies by up to `byNs` in both directions.
uint64_t Vary(uint64_t ns, uint64_t byNs, Random& random) {
  return byNs > 0 ? ns + random.Below(2 * byNs + 1) - byNs : ns;
}

}  // namespace

void TaskRunner::HandleTimers() {
  while (NextTimerNs() == nowNs_) {
    const Timer timer = timers_.front();
    std::pop_heap(timers_.begin(), timers_.end(), Later);
    timers_.pop_back();
    HandleTimer(timer);
  }
  PreemptIfDue();
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
    case TimerKind::release: return ReleaseByPeriod(timer.task);
    case TimerKind::burst: return ReleaseByBurst(timer.task);
    case TimerKind::resume: return Wake(timer.task);
  }
}

// ---- Releases ----

void TaskRunner::ReleaseByPeriod(uint32_t task) {
  const Task& spec = spec_.tasks[task];
  TaskState& state = states_[task];
  state.dueNs += Vary(spec.periodNs, spec.driftNs, state.otherRandom);
  TimeRelease(task);
  ++state.releases;
  if (spec.burst.count > 0 && Happens(spec.burst.when, state, state.releases, burstSalt)) {
    // One timer does, so a burst that has not ended is replaced by the new one.
    if (state.burstLeft == 0) AddTimer({nowNs_ + spec.burst.spacingNs, TimerKind::burst, task});
    state.burstLeft = spec.burst.count;
  }
  Release(task);
}

void TaskRunner::ReleaseByBurst(uint32_t task) {
  if (--states_[task].burstLeft > 0) {
    AddTimer({nowNs_ + spec_.tasks[task].burst.spacingNs, TimerKind::burst, task});
  }
  Release(task);
}

// A release that finds the task still at work is lost, and a timing issue.
void TaskRunner::Release(uint32_t task) {
  // What ends at this very instant is in time, so the running task's end was handled before.
  if (states_[task].active) return Record(recordTimingIssue, spec_.tasks[task].lateIssue);
  StartCycle(task);
  Wake(task);
}

// The jitter is less than what lies between two releases, so they keep their order.
void TaskRunner::TimeRelease(uint32_t task) {
  const uint64_t jitterNs = spec_.tasks[task].releaseJitterNs;
  const uint64_t lateNs = jitterNs > 0 ? states_[task].otherRandom.Below(jitterNs + 1) : 0;
  AddTimer({states_[task].dueNs + lateNs, TimerKind::release, task});
}

void TaskRunner::StartCycle(uint32_t task) {
  const Task& spec = spec_.tasks[task];
  TaskState& state = states_[task];
  ++state.cycle;
  state.active = true;
  state.doneNs = 0;
  state.stretchedNs = 0;
  state.nextAction = 0;
  state.sliceLeftNs = spec.sliceNs;
  state.runNs = Vary(spec.runNs, spec.jitterNs, state.random);
  if (Happens(spec.overrun.when, state, state.cycle, overrunSalt)) state.runNs += spec.overrun.byNs;
  state.deadlineNs = nowNs_ + spec.deadlineNs;
  if (spec.deadlineNs > 0 && !state.deadlineTimed) TimeDeadline(task);
}

void TaskRunner::TimeDeadline(uint32_t task) {
  AddTimer({states_[task].deadlineNs, TimerKind::deadline, task});
  states_[task].deadlineTimed = true;
}

bool TaskRunner::Later(const Timer& a, const Timer& b) {
  return std::tie(a.atNs, a.kind, a.task) > std::tie(b.atNs, b.kind, b.task);
}

void TaskRunner::AddTimer(const Timer& timer) {
  timers_.push_back(timer);
  std::push_heap(timers_.begin(), timers_.end(), Later);
}

// `number` counts the cycles or releases from 1; `salt` tells apart what happens to one task. The random
// choice takes one of each row of `every` numbers, so none of the rows goes without.
bool TaskRunner::Happens(const When& when, const TaskState& state, uint64_t number, uint64_t salt) const {
  if (when.afterNs > 0 && nowNs_ < startNs_ + when.afterNs) return false;
  if (!when.isRandom) return number % when.every == 0;
  const uint64_t row = (number - 1) / when.every;
  const uint64_t rowSeed = Random(state.seed ^ salt).Next() + row;
  return (number - 1) % when.every == Random(rowSeed).Next() % when.every;
}

}  // namespace sim
