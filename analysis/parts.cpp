#include "parts.h"

#include <algorithm>

namespace analysis {

std::string_view NameOf(PartKind kind) {
  static constexpr std::string_view names[] = {"execution", "preemption", "blocking",
                                               "sharing",   "dispatch",   "waiting"};
  return names[static_cast<std::size_t>(kind)];
}

Parts::Parts(const Lane& lane, TaskIndex idle, unsigned moreInterests)
    : Visitor(wantsRuns | wantsStates | wantsJobs | moreInterests),
      tasks_(lane.Tasks()),
      idle_(idle),
      states_(lane.Tasks().size()) {}

void Parts::OnRun(const Run& run) {
  running_ = noTask;
  if (run.task == noTask || run.task == idle_) return;
  std::vector<RunSum>& runs = states_[run.task].runs;
  runs.push_back({run.end, (runs.empty() ? 0 : runs.back().total) + run.Length()});
  MoveToFront(run.task);
}

void Parts::OnState(TaskIndex task, JobState state, Ticks time) {
  TaskState& waiter = states_[task];
  if (waiter.does == JobState::ended) waiter.shares.clear();
  if (waiter.does == JobState::ready) Attribute(waiter, time);
  waiter.does = state;
  waiter.since = time;
  if (state != JobState::running || running_ == task) return;
  running_ = task;
  runBegin_ = time;
}

// Those who ran since a time are the first in the list of the last runs.
void Parts::Attribute(TaskState& waiter, Ticks until) {
  if (until == waiter.since) return;
  for (TaskIndex task = newest_; task != noTask; task = states_[task].older) {
    const std::vector<RunSum>& runs = states_[task].runs;
    if (runs.back().end <= waiter.since) break;
    waiter.shares.push_back({task, runs.back().total - TotalAt(runs, waiter.since)});
  }
  if (running_ != noTask && until > runBegin_)
    waiter.shares.push_back({running_, until - std::max(runBegin_, waiter.since)});
  if (waiter.shares.size() <= waiter.fewShares) return;
  Unite(waiter.shares);
  waiter.fewShares = std::max<std::size_t>(64, 2 * waiter.shares.size());
}

// How long the runs were until `time`, which mostly lies in one of the last runs.
Ticks Parts::TotalAt(const std::vector<RunSum>& runs, Ticks time) {
  const auto endsBy = [time](const RunSum& run) { return run.end <= time; };
  std::size_t step = 1;
  while (step < runs.size() && !endsBy(runs[runs.size() - 1 - step])) step *= 2;
  const auto from = step < runs.size() ? runs.end() - static_cast<std::ptrdiff_t>(step) - 1 : runs.begin();
  const auto run = std::partition_point(from, runs.end(), endsBy);
  const Ticks before = run == runs.begin() ? 0 : (run - 1)->total;
  const Ticks begin = run->end - (run->total - before);
  return before + (time > begin ? time - begin : 0);
}

void Parts::MoveToFront(TaskIndex task) {
  if (newest_ == task) return;
  TaskState& state = states_[task];
  if (state.newer != noTask) states_[state.newer].older = state.older;
  if (state.older != noTask) states_[state.older].newer = state.newer;
  state.newer = noTask;
  state.older = newest_;
  if (newest_ != noTask) states_[newest_].newer = task;
  newest_ = task;
}

void Parts::Unite(std::vector<Share>& shares) {
  std::sort(shares.begin(), shares.end(), [](const Share& a, const Share& b) { return a.task < b.task; });
  std::size_t count = 0;
  for (const Share& share : shares) {
    if (count > 0 && shares[count - 1].task == share.task)
      shares[count - 1].ticks += share.ticks;
    else
      shares[count++] = share;
  }
  shares.resize(count);
}

PartKind Parts::KindOf(TaskIndex of, TaskIndex by) const {
  const std::uint32_t own = tasks_[of].priority;
  const std::uint32_t other = tasks_[by].priority;
  return other > own ? PartKind::preemption : other < own ? PartKind::blocking : PartKind::sharing;
}

void Parts::OnJob(const Job& job) {
  if (!job.IsWhole()) return;
  std::vector<Share>& shares = states_[job.task].shares;
  Unite(shares);
  parts_.assign(1, {PartKind::execution, job.task, job.execution});
  Ticks rest = job.Response() - job.execution - job.waiting;
  for (const Share& share : shares) {
    parts_.push_back({KindOf(job.task, share.task), share.task, share.ticks});
    rest -= share.ticks;
  }
  std::stable_sort(parts_.begin() + 1, parts_.end(),
                   [](const Part& a, const Part& b) { return a.kind < b.kind; });
  if (rest > 0) parts_.push_back({PartKind::dispatch, noTask, rest});
  if (job.waiting > 0) parts_.push_back({PartKind::waiting, noTask, job.waiting});
  OnParts(job, parts_);
}

}  // namespace analysis
