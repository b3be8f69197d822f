// What happened on a lane, kept so that any stretch of it can be looked at: runs, jobs, waits and marks.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "meanings.h"
#include "pastjob.h"

namespace analysis {

struct Stretch {
  Ticks from = 0;
  Ticks to = 0;
  Ticks Length() const { return to - from; }
};

struct PastMark {
  Ticks time;
  SubjectIndex subject;
  TaskIndex running;
};

// Memory: 12 bytes a run, 64 a job, 16 a wait, a testpoint and a timing issue.
class Schedule {
 public:
  // The lane must outlive the schedule. One walk.
  Schedule(const Lane& lane, const Conventions& conventions);

  const Lane& Of() const { return *lane_; }
  TaskIndex Idle() const { return idle_; }
  bool KnowsMeanings() const { return knowsMeanings_; }
  std::size_t TaskCount() const { return jobs_.size(); }
  std::uint32_t PriorityOf(TaskIndex task) const { return lane_->Tasks()[task].priority; }
  bool IsIdle(TaskIndex task) const { return task == noTask || task == idle_; }

  const std::vector<PastJob>& JobsOf(TaskIndex task) const { return jobs_[task]; }  // by time
  const std::vector<PastMark>& Issues() const { return issues_; }
  const std::vector<PastMark>& Testpoints() const { return testpoints_; }
  Ticks RunTimeOf(TaskIndex task) const { return runTimes_[task]; }

  // The job of `task` that is under way at `time` or ends then, else null.
  const PastJob* JobAt(TaskIndex task, Ticks time) const;
  // The jobs of `task` that overlap the stretch: from the first to behind the last.
  std::pair<std::size_t, std::size_t> JobsIn(TaskIndex task, const Stretch& stretch) const;
  // Who had the processor just before `time`.
  TaskIndex RunningBefore(Ticks time) const;
  // The waits of `task` that overlap the stretch, cut to it.
  std::vector<Stretch> WaitsIn(TaskIndex task, const Stretch& stretch) const;

  // Calls `use(task, stretch)` for each run in the stretch, cut to it. Of gaps and unknown time the task is
  // `noTask`.
  template <class Use>
  void ForEachRun(const Stretch& within, Use use) const {
    ForEachRunFrom(RunAt(within.from), within, use);
  }
  // The same for who knows the run at `within.from`. Returns the run behind the last.
  template <class Use>
  std::size_t ForEachRunFrom(std::size_t run, const Stretch& within, Use use) const {
    if (run >= runTasks_.size()) return run;
    Ticks from = std::max(runBegins_[run], within.from);
    for (; run < runTasks_.size() && from < within.to; ++run) {
      const Ticks end = runBegins_[run + 1];
      const Ticks to = std::min(end, within.to);
      if (to > from) use(runTasks_[run], Stretch{from, to});
      from = end;
    }
    return run;
  }
  // The last run that begins at or before `time`, else the first.
  std::size_t RunAt(Ticks time) const { return RunAt(time, 0, runTasks_.size()); }
  // The same in the logarithm of how far it is from the run `near`.
  std::size_t RunAt(Ticks time, std::size_t near) const;

 private:
  class Collector;

  std::size_t RunAt(Ticks time, std::size_t low, std::size_t high) const;

  const Lane* lane_;
  TaskIndex idle_;
  bool knowsMeanings_;
  std::vector<Ticks> runBegins_;  // and the end of the last
  std::vector<TaskIndex> runTasks_;
  std::vector<Ticks> runTimes_;              // by TaskIndex
  std::vector<std::vector<PastJob>> jobs_;   // by TaskIndex
  std::vector<std::vector<Stretch>> waits_;  // by TaskIndex
  std::vector<PastMark> issues_;
  std::vector<PastMark> testpoints_;
};

}  // namespace analysis
