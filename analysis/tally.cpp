#include "tally.h"

#include <algorithm>

namespace analysis {
namespace {

double Share(Ticks part, Ticks whole) { return static_cast<double>(part) / static_cast<double>(whole); }

}  // namespace

void TaskTally::Add(const TaskTally& later) {
  if (later.jobs > 0 && (jobs == 0 || later.worstResponse > worstResponse)) {
    worstResponse = later.worstResponse;
    worstAt = later.worstAt;
  }
  loadTicks += later.loadTicks;
  jobs += later.jobs;
  cut += later.cut;
  issues += later.issues;
}

void LaneTally::Add(const LaneTally& later) {
  knownTicks += later.knownTicks;
  gapTicks += later.gapTicks;
  idleTicks += later.idleTicks;
  idleKnownTicks += later.idleKnownTicks;
  switches += later.switches;
  issues += later.issues;
}

std::optional<double> LaneTally::LoadOf(const TaskTally& task) const {
  if (knownTicks == 0) return std::nullopt;
  return Share(task.loadTicks, knownTicks);
}

std::optional<double> LaneTally::Busy() const {
  if (idleKnownTicks == 0) return std::nullopt;
  return 1 - Share(idleTicks, idleKnownTicks);
}

Tally::Tally(const Lane& lane, TaskIndex idle, Ticks from, Ticks to)
    : Visitor(wantsRuns | wantsJobs | wantsMarks),
      from_(from),
      to_(to),
      stop_(lane.StopTime()),
      idle_(idle),
      tasks_(lane.Tasks().size()) {}

Ticks Tally::PartOf(Ticks begin, Ticks end) const {
  begin = std::max(begin, from_);
  end = std::min(end, to_);
  return begin < end ? end - begin : 0;
}

void Tally::OnRun(const Run& run) {
  lane_.switches += !run.cutEnd && Holds(run.end);
  if (run.task == noTask) return;
  const Ticks ticks = PartOf(run.begin, run.end);
  tasks_[run.task].loadTicks += ticks;
  lane_.knownTicks += ticks;
  if (idle_ != noTask) lane_.idleKnownTicks += ticks;
  if (run.task == idle_) lane_.idleTicks += ticks;
}

void Tally::OnJob(const Job& job) {
  const bool goesOn = job.cutEnd && job.end == stop_;
  if (goesOn || !Holds(job.end)) return;
  TaskTally one;
  one.jobs = job.IsWhole();
  one.cut = !job.IsWhole();
  one.worstResponse = job.Response();
  one.worstAt = job.activation;
  tasks_[job.task].Add(one);
}

void Tally::OnMark(const Mark& mark) {
  if (mark.type != TLLogTimingIssue || !Holds(mark.time)) return;
  ++lane_.issues;
  if (mark.running != noTask) ++tasks_[mark.running].issues;
}

void Tally::OnGap(const Gap& gap) { lane_.gapTicks += PartOf(gap.from, gap.to); }

}  // namespace analysis
