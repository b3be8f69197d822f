// Why others had the processor for longer than normal while a job was ready.
#include <algorithm>
#include <cmath>

#include "cause.h"

namespace analysis {
namespace {

// Releases that come in less than this part of the usual interval are a burst, when that is so many times the
// distance of the middle half of the intervals below it. Else there have to be that many times more than
// usual.
constexpr double burstInterval = 0.6;
constexpr Ticks quartileRanges = 4;
constexpr std::uint64_t manyMore = 3;
// A task appeared late when it comes that many of its intervals, and that part of the log, behind the start.
constexpr Ticks fewIntervals = 3;
constexpr Ticks partOfLog = 20;

struct RunsOfJobs {
  Ticks ran = 0;
  Ticks tooLong = 0;  // of that, beyond what its jobs usually take
  std::uint32_t cycles = 0;
  const PastJob* longest = nullptr;
  Ticks longestBy = 0;
};

// Whether the jobs of a task that had a part in a stretch were longer than usual.
RunsOfJobs LookAtJobs(const Schedule& schedule, TaskIndex task, const Stretch& stretch, Ticks usual) {
  RunsOfJobs result;
  const std::pair<std::size_t, std::size_t> places = schedule.JobsIn(task, stretch);
  const std::size_t first = places.first;
  const std::size_t last = places.second;
  const std::vector<PastJob>& jobs = schedule.JobsOf(task);
  std::vector<Ticks> ran(last - first);
  std::size_t place = first;
  schedule.ForEachRun(stretch, [&](TaskIndex by, const Stretch& run) {
    if (by != task) return;
    while (place < last && jobs[place].end <= run.from) ++place;
    if (place < last) ran[place - first] += run.Length();
  });
  for (std::size_t i = first; i < last; ++i) {
    if (ran[i - first] == 0) continue;
    const Ticks cycles = std::uint64_t{jobs[i].events} + 1;
    const Ticks beyond = jobs[i].execution > cycles * usual ? jobs[i].execution - cycles * usual : 0;
    const Ticks here = std::min(beyond, ran[i - first]);
    result.ran += ran[i - first];
    result.tooLong += here;
    result.cycles += static_cast<std::uint32_t>(cycles);
    if (here <= result.longestBy) continue;
    result.longest = &jobs[i];
    result.longestBy = here;
  }
  return result;
}

}  // namespace

void Causes::AddLongJob(TaskIndex task, const PastJob& job, Ticks excess, Cause& cause) {
  const Usual& usual = habits_.Execution(task);
  Link link = MakeLink(CauseKind::execution, task, excess, {job.activation, job.end}, cause);
  link.normal = usual.changedAt ? usual.medianBefore : usual.median;
  link.actual = job.execution;
  link.normalCount = link.count = 1;
  cause.chain.push_back(link);
  const bool isChanged = usual.changedAt && job.execution > usual.medianBefore + usual.medianBefore / 8;
  cause.isAnomaly = usual.IsHigh(job.ExecutionOfCycle()) || isChanged;
}

// Since some time, or since it appeared at all; or in this stretch.
bool Causes::CameMoreOften(TaskIndex task, const Stretch& stretch, Link& link) {
  const Usual& interval = habits_.Interval(task);
  const std::vector<PastJob>& jobs = schedule_.JobsOf(task);
  if (interval.changedAt && interval.medianAfter < interval.medianBefore) return true;
  const auto places = schedule_.JobsIn(task, stretch);
  if (places.first == places.second) return false;
  const Ticks begin = schedule_.Of().StartTime();
  const Ticks wait = jobs.front().activation - begin;
  if (wait > fewIntervals * interval.median && wait > schedule_.Of().Length() / partOfLog &&
      !jobs.front().cutBegin && interval.count > 0)
    return true;
  return CameInBurst(task, stretch, link);
}

// More cycles than the usual distance of its releases allows, and nearer to each other than usual.
bool Causes::CameInBurst(TaskIndex task, const Stretch& stretch, Link& link) {
  const Usual& interval = habits_.Interval(task);
  const std::vector<PastJob>& jobs = schedule_.JobsOf(task);
  const auto [first, last] = schedule_.JobsIn(task, stretch);
  if (first == last) return false;
  std::uint64_t cycles = 0;
  Ticks nearest = UINT64_MAX;
  for (std::size_t i = first; i < last; ++i) {
    cycles += std::uint64_t{jobs[i].events} + 1;
    if (i > first && jobs[i].interval > 0) nearest = std::min(nearest, jobs[i].interval);
    if (jobs[i].events > 0)
      nearest = std::min(nearest, (jobs[i].end - jobs[i].activation) / (jobs[i].events + 1));
  }
  const Ticks span =
      std::max(stretch.to, jobs[last - 1].end) - std::min(stretch.from, jobs[first].activation);
  const std::uint64_t possible = interval.median == 0 ? cycles : span / interval.median + 1;
  link.normalCount = static_cast<std::uint32_t>(possible);
  link.count = static_cast<std::uint32_t>(cycles);
  const Ticks middle = std::max<Ticks>(interval.threeQuarters - interval.quarter, 1);
  const bool isFarOff = nearest < interval.median && (interval.median - nearest) / quartileRanges > middle;
  if (!isFarOff && cycles < manyMore * possible) return false;
  return cycles > possible &&
         static_cast<double>(nearest) < burstInterval * static_cast<double>(interval.median);
}

void Causes::FollowPreemption(const Delay& delay, const PartExcess& part, Cause& cause) {
  const Usual& execution = habits_.Execution(part.task);
  const Ticks usual = execution.changedAt ? execution.medianBefore : execution.median;
  const RunsOfJobs runs = LookAtJobs(schedule_, part.task, delay.stretch, usual);
  Link link = MakeLink(CauseKind::preemptionCoincidence, part.task, part.Excess(), delay.stretch, cause);
  link.normal = part.normal;
  link.actual = part.actual;
  const Activator& answer = habits_.ActivatorOf(part.task);
  if (answer.by == Activator::By::task) link.activator = answer.task;
  if (runs.longest && runs.tooLong * 2 >= part.Excess()) {
    link.kind = CauseKind::preemptionLonger;
    link.from = runs.longest->activation;
    link.to = runs.longest->end;
    link.at = link.from;
    cause.chain.push_back(link);
    return AddLongJob(part.task, *runs.longest, runs.longestBy, cause);
  }
  const bool moreOften = CameMoreOften(part.task, delay.stretch, link);
  if (moreOften) link.kind = CauseKind::preemptionMoreOften;
  cause.isAnomaly = moreOften;
  const std::size_t first = schedule_.JobsIn(part.task, delay.stretch).first;
  if (first < schedule_.JobsOf(part.task).size()) link.at = schedule_.JobsOf(part.task)[first].activation;
  cause.chain.push_back(link);
  Link above;
  if (!moreOften || link.activator == noTask || !CameMoreOften(link.activator, delay.stretch, above)) return;
  Link by = MakeLink(CauseKind::preemptionMoreOften, link.activator, part.Excess(), delay.stretch, cause);
  by.count = above.count;
  by.normalCount = above.normalCount;
  cause.chain.push_back(by);
}

// A job that comes in a burst of its own task meets others that it usually does not meet, or waits for the
// jobs before it: then what it met, which is usual in itself, has the burst as its cause.
bool Causes::FollowOwnBurst(const Delay& delay, Cause& cause) {
  if (cause.chain.size() > 1 || !IsWithin(cause)) return false;
  const Ticks begin = delay.stretch.from - std::min(delay.stretch.from, habits_.Interval(delay.task).median);
  Ticks explained = 0;
  for (const PartExcess& part : delay.parts)
    if (part.kind == PartKind::preemption || part.kind == PartKind::execution) explained += part.Excess();
  Link link = MakeLink(CauseKind::preemptionMoreOften, delay.task, std::min(explained, delay.excess),
                       {begin, delay.stretch.to}, cause);
  if (explained * 2 < delay.excess || !CameInBurst(delay.task, {begin, delay.stretch.to}, link)) return false;
  cause.chain.push_back(link);
  return cause.isAnomaly = true;
}

void Causes::FollowSharing(const Delay& delay, const PartExcess& part, Cause& cause) {
  Link link = MakeLink(CauseKind::sharing, part.task, part.Excess(), delay.stretch, cause);
  link.normal = part.normal;
  link.actual = part.actual;
  cause.chain.push_back(link);
  const Usual& execution = habits_.Execution(part.task);
  const Ticks usual = execution.changedAt ? execution.medianBefore : execution.median;
  const RunsOfJobs runs = LookAtJobs(schedule_, part.task, delay.stretch, usual);
  if (runs.longest && runs.tooLong * 2 >= part.Excess())
    AddLongJob(part.task, *runs.longest, runs.longestBy, cause);
}

}  // namespace analysis
