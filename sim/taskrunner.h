// Runs the tasks of one processor: a fixed-priority preemptive scheduler with time slices, which goes from
// event to event in whole nanoseconds. What it does depends on its tasks and seed alone.
#pragma once

#include <cstdint>
#include <vector>

#include "logger.h"
#include "random.h"
#include "readyqueue.h"
#include "scenario.h"

namespace sim {

class TaskRunner {
 public:
  // Borrows `spec` and `logger`.
  TaskRunner(const ProcessorSpec& spec, uint64_t seed, TickClock clock, Logger& logger);

  // Puts all tasks back to their beginning; offsets count from `originNs`. The logger is started at
  // `startNs`, which lies before `originNs` when the records between are not wanted.
  void Reset(uint64_t originNs, uint64_t startNs);

  // Does all that happens before `limitNs`; ends early when the logger stops recording. False when that takes
  // more than `mostSteps`: what tasks and timers do and what is recorded, each a step.
  bool AdvanceBefore(uint64_t limitNs, uint64_t mostSteps);

  uint64_t NowNs() const { return nowNs_; }
  // The task with most steps since the reset; nothing when most of all were records that bridge silence.
  const Task* BusiestTask() const;

  uint32_t RunningTaskId() const { return spec_.tasks[running_].id; }

 private:
  enum class TimerKind : uint8_t { deadline, release, burst, resume };  // in this order at one instant

  struct Timer {
    uint64_t atNs;
    TimerKind kind;
    uint32_t task;
  };

  static constexpr uint32_t none = UINT32_MAX;

  struct TaskState {
    TaskState(const Task& spec, uint64_t seed);

    uint8_t priority;      // its own, or a higher one inherited for a lock
    bool active = false;   // a cycle has been released and is not done
    bool pending = false;  // an event asks for one more cycle
    bool deadlineTimed =
        false;  // there is a timer for the deadline or for one before; one at a time is enough
    uint32_t blockedBy = none;  // the action that keeps others from preempting it
    uint64_t cycle = 0;         // counted from 1
    uint64_t doneNs = 0;        // run time used in this cycle, and in all
    uint64_t runNs = 0;
    uint64_t stretchedNs = 0;  // by so much all further actions of the cycle have moved
    uint64_t sliceLeftNs = 0;
    uint64_t deadlineNs = 0;  // of this cycle
    size_t nextAction = 0;
    uint64_t releases = 0;  // by the period
    uint64_t dueNs = 0;     // the next of them, without its jitter
    uint64_t burstLeft = 0;
    uint64_t steps = 0;
    std::vector<uint32_t> heldLocks;
    uint32_t awaitedLock = none;
    uint32_t awaitedBy = none;  // the action that waits for it
    uint64_t seed;
    Random random;       // for run times
    Random otherRandom;  // for releases and waits, so that run times do not depend on them
  };

  struct Lock {
    uint32_t holder = none;
    uint32_t takenBy = none;        // the action of the holder that took it
    std::vector<uint32_t> waiters;  // first come first
  };

  static bool Later(const Timer& a, const Timer& b);
  uint32_t Idle() const { return static_cast<uint32_t>(spec_.tasks.size() - 1); }
  const Task& RunningTask() const { return spec_.tasks[running_]; }
  TaskState& Running() { return states_[running_]; }
  uint64_t NextTimerNs() const { return timers_.empty() ? UINT64_MAX : timers_.front().atNs; }
  bool Appears(uint32_t task) const { return spec_.tasks[task].appearsNs > 0; }
  uint64_t AppearsNs(uint32_t task) const { return startNs_ + spec_.tasks[task].appearsNs; }

  // taskrunner.cpp: the running task, and who is next
  void CountStep(uint32_t task);
  void RunningTaskActs();
  void Perform(const Action& action);
  void StartWait(const Action& action);
  void RaiseEvent(uint32_t task);
  void EndCycle();
  void EndSlice();
  void MakeReady(uint32_t task) { ready_.PushBack(task, states_[task].priority); }
  void Wake(uint32_t task);
  void RecordWoken(uint32_t next);
  void PreemptIfDue();
  void GiveWay(uint32_t type);
  void SwitchTo(uint32_t task, uint32_t type);
  void AccountRunTime();
  void PlanRunning();
  void Record(uint32_t type, uint32_t id) { logger_.Record(clock_.At(nowNs_), type, id); }

  // tasktimers.cpp: releases, deadlines, ends of waits
  void HandleTimers();
  void HandleTimer(const Timer& timer);
  void ReleaseByPeriod(uint32_t task);
  void ReleaseByBurst(uint32_t task);
  void Release(uint32_t task);
  void TimeRelease(uint32_t task);
  void StartCycle(uint32_t task);
  void TimeDeadline(uint32_t task);
  void AddTimer(const Timer& timer);
  bool Happens(const When& when, const TaskState& state, uint64_t number, uint64_t salt) const;

  // tasklocks.cpp
  void TakeLock(const Action& action);
  void ReleaseLock(uint32_t index);
  void InheritPriority(uint32_t task, uint8_t priority);
  void RestorePriority(uint32_t task);

  const ProcessorSpec& spec_;
  uint64_t seed_;
  TickClock clock_;
  Logger& logger_;

  uint64_t startNs_ = 0;  // of the logger
  uint64_t nowNs_ = 0;
  uint64_t steps_ = 0;  // since the reset
  uint32_t running_ = 0;
  uint64_t accountedNs_ = 0;     // the running task's run time is accounted up to here
  uint64_t actsAtNs_ = 0;        // when the running task next does something by itself
  std::vector<Timer> timers_;    // a heap, earliest in front
  std::vector<uint32_t> woken_;  // made ready at this instant, and not recorded yet
  std::vector<TaskState> states_;
  std::vector<Lock> locks_;
  ReadyQueue ready_;
};

}  // namespace sim
