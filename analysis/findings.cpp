#include "findings.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace analysis {
namespace {

// A job that takes that part of the log and comes to no end.
constexpr Ticks starvingPart = 4;
// Two periods that beat bring several late jobs in a row, and one of those takes twice as long as half of
// all.
constexpr std::size_t shortestBeat = 3;
// A task that is late by nearly as much as the one that is late most may stand for both.
constexpr double nearlyAsMuch = 0.8;

using Root = std::pair<CauseKind, TaskIndex>;

// The late jobs of one task with one root.
struct Group {
  std::vector<LateJob> jobs;
  LateJob worst;
  Cause cause;  // of the worst
  Ticks excess = 0;
  std::size_t certain = 0;
  std::size_t anomalies = 0;
  std::size_t changes = 0;
};

using GroupsOfRoot = std::map<TaskIndex, Group>;

class Explainer {
 public:
  Explainer(const Schedule& schedule, const Question& question, const Schedule* good)
      : schedule_(schedule), question_(question), habits_(schedule, good), causes_(schedule, habits_) {}

  Explanation Run() {
    AddGaps();
    suspects_ = FindSuspects(schedule_, habits_, question_);
    result_.asked = suspects_.asked;
    for (TaskIndex task = 0; task < schedule_.TaskCount(); ++task) {
      Count(task);
      if (question_.task == noTask || question_.task == task) Group(task);
    }
    for (auto& [root, groups] : roots_) AddFinding(root, groups);
    std::stable_sort(result_.findings.begin(), result_.findings.end(), IsBefore);
    return std::move(result_);
  }

 private:
  static bool IsBefore(const Finding& a, const Finding& b) {
    const bool aIsGap = a.cause.Root().kind == CauseKind::lostRecords;
    const bool bIsGap = b.cause.Root().kind == CauseKind::lostRecords;
    if (aIsGap != bIsGap) return aIsGap;
    const bool aIsKnown = a.cause.Root().kind != CauseKind::unknown;
    const bool bIsKnown = b.cause.Root().kind != CauseKind::unknown;
    if (aIsKnown != bIsKnown) return aIsKnown;
    if (a.IsCertain() != b.IsCertain()) return a.IsCertain();
    return a.excess > b.excess;
  }

  void Count(TaskIndex task) {
    std::uint64_t whole = 0;
    for (const PastJob& job : schedule_.JobsOf(task)) whole += job.isWhole;
    result_.jobs += whole;
    result_.tasks += whole > 0;
  }

  void AddGaps() {
    const Lane& lane = schedule_.Of();
    if (lane.Gaps().empty()) return;
    Finding finding;
    finding.excess = lane.TicksInGaps();
    finding.cause.actual = finding.excess;
    Link link;
    link.kind = CauseKind::lostRecords;
    for (const Gap& gap : lane.Gaps()) {
      finding.occurrences.push_back({gap.from, gap.to});
      if (gap.to - gap.from <= link.excess) continue;
      link.excess = gap.to - gap.from;
      link.from = link.at = gap.from;
      link.to = gap.to;
      finding.job = finding.occurrences.back();
    }
    link.excess = finding.excess;
    link.share = 1;
    finding.cause.chain.push_back(link);
    finding.confidence = 1;
    result_.findings.push_back(std::move(finding));
  }

  void Group(TaskIndex task) {
    for (const LateJob& job : suspects_.late[task]) {
      Cause cause = causes_.Of(job);
      if (cause.Excess() == 0) continue;
      if (job.IsCertain() && !cause.isAnomaly &&
          suspects_.IsOverloadedAt(schedule_.JobsOf(task)[job.place].activation))
        BlameLane(cause);
      Take(job, std::move(cause));
    }
  }

  static void BlameLane(Cause& cause) {
    Link link = cause.chain.front();
    link.kind = CauseKind::overload;
    link.task = noTask;
    link.excess = cause.Excess();
    link.share = 1;
    cause.chain = {link};
    cause.also.clear();
  }

  void Take(const LateJob& job, Cause cause) {
    struct Group& group = roots_[{cause.Root().kind, cause.Root().task}][job.task];
    group.jobs.push_back(job);
    group.excess += cause.Excess();
    group.certain += job.IsCertain();
    group.anomalies += cause.isAnomaly;
    group.changes += job.sign == LateSign::change;
    const bool isWorst = group.jobs.size() == 1 || cause.Excess() > group.cause.Excess();
    if (!isWorst) return;
    group.worst = job;
    group.cause = std::move(cause);
  }

  // ---- What is worth telling ----

  bool IsWorthTelling(const Root& root, const struct Group& group) {
    if (group.certain > 0) return true;
    if (root.first == CauseKind::unknown) return false;
    if (root.first == CauseKind::execution && IsBackground(group.worst.task) && group.cause.chain.size() == 1)
      return false;
    return group.anomalies * 2 >= group.jobs.size() || IsBeat(root, group);
  }

  // No task has a lower priority, except the idle task: its long jobs are in nobody's way.
  bool IsBackground(TaskIndex task) const {
    for (TaskIndex other = 0; other < schedule_.TaskCount(); ++other) {
      const bool counts = other != task && !schedule_.IsIdle(other) && !schedule_.JobsOf(other).empty();
      if (counts && schedule_.PriorityOf(other) <= schedule_.PriorityOf(task)) return false;
    }
    return true;
  }

  bool IsBeat(const Root& root, const struct Group& group) {
    if (root.first != CauseKind::preemptionCoincidence) return false;
    const TaskIndex late = group.worst.task;
    if (habits_.PeriodOf(late) == 0 || habits_.PeriodOf(root.second) == 0) return false;
    std::size_t rows = 1;
    for (std::size_t i = 1; i < group.jobs.size(); ++i)
      rows += group.jobs[i].place > group.jobs[i - 1].place + 1;
    return group.jobs.size() >= shortestBeat * rows && group.cause.actual >= 2 * group.cause.normal;
  }

  // The one that stands for all: where the lane is overloaded, the one of lowest priority; the end of a chain
  // of activations; one that was certainly late; the one that lost most, of equals the one next to the root.
  TaskIndex ChooseLate(const Root& root, const GroupsOfRoot& groups) const {
    const auto isActivation = [](const struct Group& group) {
      return group.cause.chain.front().kind == CauseKind::lateActivation && group.cause.chain.size() > 1;
    };
    Ticks most = 0;
    for (const auto& [task, group] : groups) most = std::max(most, group.excess);
    const auto rank = [&](TaskIndex task, const struct Group& group) {
      const bool isNear = static_cast<double>(group.excess) >= nearlyAsMuch * static_cast<double>(most);
      const bool isEnd = isNear && isActivation(group);
      const std::size_t length = group.cause.chain.size();
      const std::uint32_t below =
          root.first == CauseKind::overload ? UINT32_MAX - schedule_.PriorityOf(task) : 0;
      return std::make_tuple(below, isEnd ? length : 0, group.certain > 0, isNear,
                             isNear ? longestChain - length : 0, group.excess);
    };
    const auto best = std::max_element(groups.begin(), groups.end(), [&](const auto& a, const auto& b) {
      return rank(a.first, a.second) < rank(b.first, b.second);
    });
    return best->first;
  }

  void AddFinding(const Root& root, GroupsOfRoot& groups) {
    std::erase_if(groups, [&](const auto& one) { return !IsWorthTelling(root, one.second); });
    if (groups.empty()) return;
    Finding finding;
    finding.task = ChooseLate(root, groups);
    struct Group& group = groups[finding.task];
    finding.sign = group.worst.sign;
    for (const LateJob& job : group.jobs) {
      const PastJob& past = schedule_.JobsOf(finding.task)[job.place];
      finding.occurrences.push_back({past.activation, past.end});
      finding.sign = std::min(finding.sign, job.sign);
      if (job.issue != noSubject) finding.issue = job.issue;
    }
    const PastJob& worst = schedule_.JobsOf(finding.task)[group.worst.place];
    finding.job = {worst.activation, worst.end};
    if (group.changes * 2 > group.jobs.size()) finding.since = finding.occurrences.front().activation;
    finding.excess = group.excess;
    finding.cause = std::move(group.cause);
    causes_.Complete(finding.task, {worst.activation, worst.end}, finding.cause);
    finding.confidence = ConfidenceOf(finding, group);
    if (root.first == CauseKind::overload) {
      finding.since = OverloadedSince();
      BlameStarving(finding);
    }
    for (const auto& [task, other] : groups)
      if (task != finding.task) finding.alsoLate.push_back({task, other.jobs.size(), other.excess});
    result_.findings.push_back(std::move(finding));
  }

  // Where the last overload did not begin with the log and did not end before it.
  std::optional<Ticks> OverloadedSince() const {
    const Stretch& last = suspects_.overloaded.back();
    const bool forGood = last.from > schedule_.Of().StartTime() && last.to == schedule_.Of().StopTime();
    return forGood ? std::optional(last.from) : std::nullopt;
  }

  // A task of still lower priority may have come to no end at all.
  void BlameStarving(Finding& finding) const {
    for (TaskIndex task = 0; task < schedule_.TaskCount(); ++task) {
      const std::vector<PastJob>& jobs = schedule_.JobsOf(task);
      const bool isLower = schedule_.PriorityOf(task) < schedule_.PriorityOf(finding.task);
      if (schedule_.IsIdle(task) || !isLower || jobs.size() != 1 || jobs[0].isWhole) continue;
      if (jobs[0].Response() * starvingPart < schedule_.Of().Length()) continue;
      finding.task = task;
      finding.job = {jobs[0].activation, jobs[0].end};
      finding.occurrences = {finding.job};
      finding.cause.normal = 0;
      finding.cause.actual = finding.excess = jobs[0].Response();
      finding.cause.parts.clear();
    }
  }

  // The share of the lateness that the chain tells, less where meanings or few occurrences leave doubts.
  double ConfidenceOf(const Finding& finding, const struct Group& group) const {
    if (finding.cause.Root().kind == CauseKind::unknown) return 0;
    double least = 1;
    for (const Link& link : finding.cause.chain) least = std::min(least, link.share);
    const double counts = group.jobs.size() > 1 ? 1 : 0.8;
    const double meanings = schedule_.KnowsMeanings() ? 1 : 0.7;
    const double signs = finding.IsCertain() || group.anomalies > 0 ? 1 : 0.8;
    return least * counts * meanings * signs * schedule_.Of().Coverage();
  }

  const Schedule& schedule_;
  const Question& question_;
  Habits habits_;
  Causes causes_;
  Suspects suspects_;
  std::map<Root, GroupsOfRoot> roots_;
  Explanation result_;
};

}  // namespace

Explanation Explain(const Schedule& schedule, const Question& question, const Schedule* good) {
  return Explainer(schedule, question, good).Run();
}

}  // namespace analysis
