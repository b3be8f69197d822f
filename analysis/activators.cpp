#include "activators.h"

#include <algorithm>

#include "usual.h"

namespace analysis {
namespace {

constexpr std::size_t fewestActivations = 10;

bool IsNineInTen(std::size_t some, std::size_t all) { return some * 10 >= all * 9; }

bool IsEventOf(const PastJob& job, TaskIndex task) { return job.byEvent && job.activator == task; }

// Who may have a majority: each vote for another takes one off.
TaskIndex FindCandidate(const std::vector<PastJob>& jobs) {
  TaskIndex candidate = noTask;
  std::size_t lead = 0;
  for (const PastJob& job : jobs) {
    if (job.cutBegin) continue;
    const TaskIndex vote = job.byEvent ? job.activator : noTask;
    if (lead == 0) candidate = vote;
    lead += vote == candidate ? 1 : std::size_t(-1);
  }
  return candidate;
}

std::uint64_t SpreadOf(std::vector<std::uint64_t>& values) {
  return values.empty() ? 0 : Quantile(values, 0.9) - Quantile(values, 0.1);
}

// A timer keeps its time whether or not the candidate runs by then. So where an interval is off, and by more
// than the candidate runs, the candidate runs at such an activation only if it makes it.
bool FollowsWhenOff(const std::vector<PastJob>& jobs, TaskIndex candidate,
                    std::vector<std::uint64_t>& intervals, std::vector<std::uint64_t>& executions) {
  if (intervals.empty()) return false;
  const Ticks period = std::max<Ticks>(Quantile(intervals, 0.5), 1);
  const Ticks room = Quantile(executions, 0.5) + 2;
  std::size_t off = 0, followed = 0;
  for (const PastJob& job : jobs) {
    const Ticks beyond = job.interval % period;  // releases may have been lost
    if (job.interval == 0 || std::min(beyond, period - beyond) <= room) continue;
    ++off;
    followed += IsEventOf(job, candidate);
  }
  return off > 0 && IsNineInTen(followed, off);
}

}  // namespace

Activator FindActivator(const std::vector<PastJob>& jobs) {
  const TaskIndex candidate = FindCandidate(jobs);
  std::size_t activations = 0, atOnce = 0;
  std::vector<std::uint64_t> executions, intervals;
  for (const PastJob& job : jobs) {
    if (job.cutBegin) continue;
    ++activations;
    if (job.interval > 0) intervals.push_back(job.interval);
    if (!IsEventOf(job, candidate)) continue;
    executions.push_back(job.activatorExecution);
    atOnce += job.startsAtOnce;
  }
  if (activations < fewestActivations) return {};
  if (candidate == noTask || !IsNineInTen(executions.size(), activations))
    return {Activator::By::outside, noTask};
  const bool byCandidate = IsNineInTen(atOnce, executions.size()) ||
                           SpreadOf(executions) < SpreadOf(intervals) ||
                           FollowsWhenOff(jobs, candidate, intervals, executions);
  return byCandidate ? Activator{Activator::By::task, candidate} : Activator{Activator::By::outside, noTask};
}

}  // namespace analysis
