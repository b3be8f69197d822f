#include "schedule.h"

#include <algorithm>

#include "lanewalker.h"

namespace analysis {

// A sink of the walk whose calls the compiler can see through.
class Schedule::Collector {
 public:
  explicit Collector(Schedule& schedule) : to_(schedule), waitBegins_(schedule.jobs_.size(), notWaiting) {}

  bool WantsMarks() const { return true; }
  bool WantsMarkSubjects() const { return true; }
  void OnRun(const Run& run) {
    to_.runBegins_.push_back(run.begin);
    to_.runTasks_.push_back(run.task);
    if (run.task != noTask) to_.runTimes_[run.task] += run.Length();
  }
  // The end of a wait may be recorded as an event, too; that asks for no other cycle.
  void OnJob(const Job& job) {
    const std::uint32_t events = job.events - std::min(job.events, job.waits);
    to_.jobs_[job.task].push_back({job.activation, job.end, job.execution, job.waiting,
                                   job.hasInterval ? job.interval : 0, job.activatorExecution, events,
                                   job.activator, job.byEvent, job.hasRun && job.StartLatency() <= 1,
                                   job.IsWhole(), job.cutBegin});
  }
  void OnActivation(const Job&) {}
  void OnStart(const Job&) {}
  void OnDropped(const Job&) {}
  void OnState(TaskIndex task, JobState state, Ticks time) {
    if (state == JobState::waiting) {
      waitBegins_[task] = time;
    } else if (waitBegins_[task] != notWaiting) {
      to_.waits_[task].push_back({waitBegins_[task], time});
      waitBegins_[task] = notWaiting;
    }
  }
  void OnMark(const Mark& mark) {
    if (mark.type == TLLogTestpoint) to_.testpoints_.push_back({mark.time, mark.subject, mark.running});
    if (mark.type == TLLogTimingIssue) to_.issues_.push_back({mark.time, mark.subject, mark.running});
  }
  void OnGap(const Gap& gap) {
    to_.runBegins_.push_back(gap.from);
    to_.runTasks_.push_back(noTask);
  }
  void OnEnd(Ticks stop) { to_.runBegins_.push_back(stop); }

 private:
  static constexpr Ticks notWaiting = UINT64_MAX;
  Schedule& to_;
  std::vector<Ticks> waitBegins_;
};

Schedule::Schedule(const Lane& lane, const Conventions& conventions)
    : lane_(&lane),
      idle_(conventions.idle),
      knowsMeanings_(conventions.meanings.AreKnown()),
      runTimes_(lane.Tasks().size()),
      jobs_(lane.Tasks().size()),
      waits_(lane.Tasks().size()) {
  Collector collector(*this);
  LaneWalker<Collector>(lane, conventions, collector).Walk();
}

const PastJob* Schedule::JobAt(TaskIndex task, Ticks time) const {
  const auto [first, last] = JobsIn(task, {time - (time > 0), time + 1});
  return first == last ? nullptr : &jobs_[task][first];
}

std::pair<std::size_t, std::size_t> Schedule::JobsIn(TaskIndex task, const Stretch& stretch) const {
  const std::vector<PastJob>& jobs = jobs_[task];
  const auto first = std::partition_point(jobs.begin(), jobs.end(),
                                          [&](const PastJob& job) { return job.end <= stretch.from; });
  const auto last = std::partition_point(first, jobs.end(),
                                         [&](const PastJob& job) { return job.activation < stretch.to; });
  return {static_cast<std::size_t>(first - jobs.begin()), static_cast<std::size_t>(last - jobs.begin())};
}

std::size_t Schedule::RunAt(Ticks time, std::size_t near) const {
  const std::size_t count = runTasks_.size();
  std::size_t low = std::min(near, count),
              high = low;  // the first that begins later is none of those between
  std::size_t step = 1;
  while (high < count && runBegins_[high] <= time) {
    low = high + 1;
    high += std::min(step, count - high);
    step *= 2;
  }
  while (low > 0 && runBegins_[low - 1] > time) {
    high = low - 1;
    low -= std::min(step, low);
    step *= 2;
  }
  return RunAt(time, low, high);
}

// The first that begins later lies there, or at `high`.
std::size_t Schedule::RunAt(Ticks time, std::size_t low, std::size_t high) const {
  const auto begin = runBegins_.begin();
  const auto behind = std::upper_bound(begin + static_cast<std::ptrdiff_t>(low),
                                       begin + static_cast<std::ptrdiff_t>(high), time);
  return static_cast<std::size_t>(behind - begin) - (behind != begin);
}

TaskIndex Schedule::RunningBefore(Ticks time) const {
  if (runTasks_.empty() || time == 0) return noTask;
  return runTasks_[RunAt(time - 1)];
}

std::vector<Stretch> Schedule::WaitsIn(TaskIndex task, const Stretch& stretch) const {
  const std::vector<Stretch>& waits = waits_[task];
  auto wait = std::partition_point(waits.begin(), waits.end(),
                                   [&](const Stretch& one) { return one.to <= stretch.from; });
  std::vector<Stretch> found;
  for (; wait != waits.end() && wait->from < stretch.to; ++wait)
    found.push_back({std::max(wait->from, stretch.from), std::min(wait->to, stretch.to)});
  return found;
}

}  // namespace analysis
