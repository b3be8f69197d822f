#include "statistics.h"

#include "lanewalker.h"

namespace analysis {
namespace {

// Calls that the compiler can see through.
class Direct {
 public:
  explicit Direct(Statistics& statistics) : statistics_(statistics) {}

  bool WantsMarks() const { return true; }
  bool WantsMarkSubjects() const { return false; }
  void OnRun(const Run& run) { statistics_.Statistics::OnRun(run); }
  void OnJob(const Job& job) { statistics_.Statistics::OnJob(job); }
  void OnActivation(const Job&) {}
  void OnStart(const Job&) {}
  void OnDropped(const Job& job) { statistics_.Statistics::OnDropped(job); }
  void OnState(TaskIndex, JobState, Ticks) {}
  void OnMark(const Mark& mark) { statistics_.Statistics::OnMark(mark); }
  void OnGap(const Gap&) {}
  void OnEnd(Ticks) {}

 private:
  Statistics& statistics_;
};

constexpr std::string_view quantityNames[] = {"execution", "response", "startLatency", "activationInterval",
                                              "run"};

}  // namespace

std::string_view NameOf(Quantity quantity) { return quantityNames[static_cast<std::size_t>(quantity)]; }

std::optional<Quantity> QuantityNamed(std::string_view name) {
  for (std::size_t i = 0; i < quantityCount; ++i)
    if (name == quantityNames[i]) return static_cast<Quantity>(i);
  return std::nullopt;
}

Statistics::Statistics(const Lane& lane, TaskIndex idle)
    : Visitor(wantsRuns | wantsJobs | wantsBeginnings | wantsMarks),
      tasks_(lane.Tasks().size()),
      idle_(idle),
      coveredTicks_(lane.CoveredTicks()) {}

Statistics Statistics::Of(const Lane& lane, const Conventions& conventions) {
  Statistics statistics(lane, conventions.idle);
  Direct direct(statistics);
  LaneWalker<Direct>(lane, conventions, direct).Walk();
  return statistics;
}

void Statistics::OnRun(const Run& run) {
  switches_ += !run.cutEnd;
  if (run.task == noTask) {
    unknownTicks_ += run.Length();
    return;
  }
  TaskStatistics& task = tasks_[run.task];
  task.loadTicks += run.Length();
  if (run.IsWhole()) task.Of(Quantity::run).Add(run.Length(), run.begin);
}

void Statistics::OnJob(const Job& job) {
  TaskStatistics& task = tasks_[job.task];
  ForEachValue(job, [&](Quantity quantity, Ticks ticks) { task.Of(quantity).Add(ticks, job.activation); });
  if (!job.IsWhole()) {
    ++task.cut;
    return;
  }
  ++task.jobs;
  task.askedEarlier += job.askedEarlier;
  task.preemptions += job.preemptions;
  task.slices += job.slices;
  task.waits += job.waits;
}

void Statistics::OnDropped(const Job& job) { ++tasks_[job.task].dropped; }

void Statistics::OnMark(const Mark& mark) {
  if (mark.running == noTask) return;
  TaskStatistics& task = tasks_[mark.running];
  task.testpoints += mark.type == TLLogTestpoint;
  task.issues += mark.type == TLLogTimingIssue;
}

Ticks Statistics::KnownTicks() const { return coveredTicks_ - unknownTicks_; }

std::optional<double> Statistics::LoadOf(TaskIndex task) const {
  if (KnownTicks() == 0) return std::nullopt;
  return static_cast<double>(tasks_[task].loadTicks) / static_cast<double>(KnownTicks());
}

std::optional<double> Statistics::Busy() const {
  const std::optional<double> idle = idle_ == noTask ? std::nullopt : LoadOf(idle_);
  return idle ? std::optional<double>(1 - *idle) : std::nullopt;
}

}  // namespace analysis
