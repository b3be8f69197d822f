#include "issuepoints.h"

#include <algorithm>

namespace analysis {
namespace {

constexpr Stretch wholeTime{0, UINT64_MAX};

}  // namespace

IssuePointFinder::Runs::Runs(const Schedule& schedule) : begins(schedule.TaskCount() + 1) {
  schedule.ForEachRun(wholeTime, [&](TaskIndex task, const Stretch&) {
    if (task != noTask) ++begins[task + 1];
  });
  for (std::size_t i = 1; i < begins.size(); ++i) begins[i] += begins[i - 1];
  all.resize(begins.back());
  std::vector<std::size_t> next(begins.begin(), begins.end() - 1);
  std::vector<Ticks> sums(next.size());
  schedule.ForEachRun(wholeTime, [&](TaskIndex task, const Stretch& run) {
    if (task != noTask) all[next[task]++] = {run.to, sums[task] += run.Length()};
  });
}

Ticks IssuePointFinder::Runs::RunTimeUntil(TaskIndex task, Ticks time) const {
  const auto first = all.begin() + static_cast<std::ptrdiff_t>(begins[task]);
  const auto last = all.begin() + static_cast<std::ptrdiff_t>(begins[task + 1]);
  const auto run = std::partition_point(first, last, [&](const Run& one) { return one.end <= time; });
  const Ticks before = run == first ? 0 : run[-1].total;
  if (run == last) return before;
  const Ticks begin = run->end - (run->total - before);
  return before + (time > begin ? time - begin : 0);
}

IssuePointFinder::IssuePointFinder(const Schedule& schedule) : schedule_(schedule) {
  const std::vector<PastMark>& issues = schedule.Issues();
  for (std::size_t i = 0; i < issues.size(); ++i)
    issues_[issues[i].subject].push_back(static_cast<std::uint32_t>(i));
}

const IssuePoints& IssuePointFinder::PointsOf(TaskIndex by, SubjectIndex issue) {
  const auto [found, isNew] = found_.try_emplace({by, issue});
  if (isNew) found->second = Find(by, issues_.at(issue));
  return found->second;
}

IssuePoints IssuePointFinder::Find(TaskIndex by, const std::vector<std::uint32_t>& issues) {
  if (!runs_) runs_.emplace(schedule_);
  IssuePoints points;
  const std::size_t step = (issues.size() + mostSamples - 1) / mostSamples;
  for (std::size_t i = 0; i < issues.size(); i += step) {
    const PastMark& issue = schedule_.Issues()[issues[i]];
    ++points.looked;
    const PastJob* job = issue.running == by ? schedule_.JobAt(by, issue.time) : nullptr;
    if (!job) continue;
    ++points.raised;
    const Ticks executed = runs_->RunTimeUntil(by, issue.time) - runs_->RunTimeUntil(by, job->activation);
    points.least = std::min(points.least, executed);
    points.most = std::max(points.most, executed);
  }
  return points;
}

}  // namespace analysis
