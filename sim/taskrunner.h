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

  // Puts all tasks back to their beginning; offsets count from `originNs`.
  void Reset(uint64_t originNs);

  // Does all that happens before `limitNs`; ends early when the logger stops recording. False when that takes
  // more than `mostSteps`: what tasks and timers do and what is recorded, each a step.
  bool AdvanceBefore(uint64_t limitNs, uint64_t mostSteps);

  uint64_t NowNs() const { return nowNs_; }
  // The task with most steps since the reset; nothing when most of all were records that bridge silence.
  const Task* BusiestTask() const;

  uint32_t RunningTaskId() const { return spec_.tasks[running_].id; }

 private:
  enum class TimerKind : uint8_t { deadline, release, resume };  // in this order at one instant

  struct Timer {
    uint64_t atNs;
    TimerKind kind;
    uint32_t task;
  };

  struct TaskState {
    explicit TaskState(uint64_t seed) : random(seed) {}

    bool active = false;   // a cycle has been released and is not done
    bool pending = false;  // an event asks for one more cycle
    uint64_t cycle = 0;    // counted from 1
    uint64_t doneNs = 0;   // run time used in this cycle, and in all
    uint64_t runNs = 0;
    uint64_t sliceLeftNs = 0;
    uint64_t deadlineNs = 0;     // of this cycle
    bool deadlineTimed = false;  // there is a timer for it or for one before; one at a time is enough
    uint64_t steps = 0;
    size_t nextAction = 0;
    Random random;
  };

  static bool Later(const Timer& a, const Timer& b);
  uint32_t Idle() const { return static_cast<uint32_t>(spec_.tasks.size() - 1); }
  const Task& RunningTask() const { return spec_.tasks[running_]; }
  uint64_t NextTimerNs() const { return timers_.empty() ? UINT64_MAX : timers_.front().atNs; }

  void CountStep(uint32_t task);
  void RunningTaskActs();
  void Perform(const Action& action);
  void RaiseEvent(uint32_t task);
  void EndCycle();
  void EndSlice();

  void HandleTimers();
  void HandleTimer(const Timer& timer);
  void Release(uint32_t task);
  void StartCycle(uint32_t task);
  void TimeDeadline(uint32_t task);
  void MakeReady(uint32_t task) { ready_.PushBack(task, spec_.tasks[task].priority); }

  bool Preempts() const;
  void Preempt();
  void GiveWay(uint32_t type);
  void SwitchTo(uint32_t task, uint32_t type);
  void AccountRunTime();
  void PlanRunning();
  void AddTimer(const Timer& timer);
  void Record(uint32_t type, uint32_t id) { logger_.Record(clock_.At(nowNs_), type, id); }

  const ProcessorSpec& spec_;
  uint64_t seed_;
  TickClock clock_;
  Logger& logger_;

  uint64_t nowNs_ = 0;
  uint64_t steps_ = 0;  // since the reset
  uint32_t running_ = 0;
  uint64_t accountedNs_ = 0;     // the running task's run time is accounted up to here
  uint64_t actsAtNs_ = 0;        // when the running task next does something by itself
  std::vector<Timer> timers_;    // a heap, earliest in front
  std::vector<uint32_t> woken_;  // made ready by the timers of one instant
  std::vector<TaskState> states_;
  ReadyQueue ready_;
};

}  // namespace sim
