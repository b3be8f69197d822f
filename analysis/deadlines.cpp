// Timing issues that a controller raises because a job is late, told from those that are messages.
#include <algorithm>
#include <functional>
#include <map>

#include "issuepoints.h"
#include "lateness.h"

namespace analysis {
namespace {

// An issue during a job.
struct Raised {
  std::size_t issue;  // its place in Schedule::Issues()
  Ticks elapsed;      // since its activation
};

// Issues raised for a deadline come at one time after the activation, to this many ticks or this share of it.
constexpr Ticks fewTicks = 3;
constexpr Ticks partsOff = 400;
// Of the jobs that take longer than a deadline, so many in ten have its issue.
constexpr std::size_t mostHaveIt = 8;
// Of the issues, so many in ten come during late jobs of the task.
constexpr std::size_t nearlyAll = 9;
// So many jobs with an issue are enough to tell, of each task; so many issues to tell a message.
constexpr std::size_t mostPairs = 65536;
constexpr std::size_t mostPairsInAll = std::size_t{1} << 22;  // where tasks are many, each has its part
constexpr std::size_t fewestPairs = 512;

bool IsNear(Ticks one, Ticks other) {
  const Ticks distance = one > other ? one - other : other - one;
  return distance <= std::max(fewTicks, other / partsOff);
}

// The first of the issues from number `from` on that is later than `time`. Time: the logarithm of how far it
// is.
std::size_t FirstAfter(const std::vector<PastMark>& issues, std::size_t from, Ticks time) {
  const auto isPast = [time](const PastMark& issue) { return issue.time <= time; };
  std::size_t last = from, step = 1;
  while (last < issues.size() && isPast(issues[last])) {
    from = last + 1;
    last += step;
    step *= 2;
  }
  const auto begin = issues.begin();
  const auto end = begin + static_cast<std::ptrdiff_t>(std::min(last, issues.size()));
  return static_cast<std::size_t>(
      std::partition_point(begin + static_cast<std::ptrdiff_t>(from), end, isPast) - begin);
}

// By their places among the issues of the lane.
using RaisedBySubject = std::map<SubjectIndex, std::vector<Raised>>;

// `end` becomes the place behind the last job that was looked at.
RaisedBySubject IssuesDuringJobs(const Schedule& schedule, TaskIndex task, std::size_t& end) {
  RaisedBySubject all;
  const std::size_t most = std::clamp(mostPairsInAll / schedule.TaskCount(), fewestPairs, mostPairs);
  std::size_t pairs = 0;
  const std::vector<PastMark>& issues = schedule.Issues();
  std::size_t issue = 0;
  const std::vector<PastJob>& jobs = schedule.JobsOf(task);
  end = jobs.size();
  for (std::size_t place = 0; place < jobs.size() && issue < issues.size(); ++place) {
    const PastJob& job = jobs[place];
    if (pairs >= most) return end = place, all;
    issue = FirstAfter(issues, issue, job.activation);
    if (job.cutBegin) continue;
    for (std::size_t one = issue; one < issues.size() && issues[one].time <= job.end && pairs < most;
         ++one, ++pairs)
      all[issues[one].subject].push_back({one, issues[one].time - job.activation});
  }
  return all;
}

// The elapsed time near which most of them lie.
std::vector<Raised> MostAtOneTime(std::vector<Raised> raised) {
  std::sort(raised.begin(), raised.end(),
            [](const Raised& a, const Raised& b) { return a.elapsed < b.elapsed; });
  std::size_t best = 0, bestCount = 0;
  for (std::size_t first = 0, last = 0; first < raised.size(); ++first) {
    last = std::max(last, first);
    while (last < raised.size() && IsNear(raised[last].elapsed, raised[first].elapsed)) ++last;
    if (last - first <= bestCount) continue;
    best = first;
    bestCount = last - first;
  }
  const auto from = raised.begin() + static_cast<std::ptrdiff_t>(best);
  return {from, from + static_cast<std::ptrdiff_t>(bestCount)};
}

// A job that goes on may have the issue of each release that it makes impossible.
std::size_t CountAtMultiples(const std::vector<Raised>& raised, Ticks length) {
  const auto fits = [length](const Raised& one) {
    const Ticks times = (one.elapsed + length / 2) / length;
    return times > 0 && IsNear(one.elapsed, times * length);
  };
  return static_cast<std::size_t>(std::count_if(raised.begin(), raised.end(), fits));
}

// A task raises a message at one point of its own work: how much of it is done by then varies less than the
// time since the activation of the task that may be late. Just as a job begins, others may raise what is due
// then.
bool AreAtOnePoint(const IssuePoints& points, Ticks room) {
  return points.raised * 2 > points.looked && points.least > fewTicks &&
         points.most - points.least <= room + fewTicks;
}

// Of two tasks in step with each other that is so of either. But a message does not ask whether the other is
// late.
bool IsMessage(const Schedule& schedule, IssuePointFinder& finder, TaskIndex task,
               const std::vector<Raised>& raised, std::size_t fitting) {
  const PastMark& first = schedule.Issues()[raised.front().issue];
  if (schedule.IsIdle(first.running)) return false;
  if (first.running != task && fitting * 10 >= finder.CountOf(first.subject) * nearlyAll) return false;
  return AreAtOnePoint(finder.PointsOf(first.running, first.subject),
                       raised.back().elapsed - raised.front().elapsed);
}

struct Candidate {
  TaskIndex task;
  SubjectIndex issue;
  std::vector<Raised> raised;  // by elapsed time
  bool isPeriod = false;
  Ticks Length() const { return raised.front().elapsed; }
  Ticks Latest() const { return raised.back().elapsed; }
};

// The longest responses of the first `count` jobs, where they are whole: so many at most, by length.
std::vector<Ticks> LongestResponses(const std::vector<PastJob>& jobs, std::size_t count, std::size_t most) {
  std::vector<Ticks> responses;
  responses.reserve(count);
  for (std::size_t i = 0; i < count; ++i)
    if (jobs[i].isWhole) responses.push_back(jobs[i].Response());
  const auto kept = responses.begin() + static_cast<std::ptrdiff_t>(std::min(most, responses.size()));
  std::nth_element(responses.begin(), kept, responses.end(), std::greater<>());
  responses.erase(kept, responses.end());
  std::sort(responses.begin(), responses.end());
  return responses;
}

// So many jobs may take longer than the deadline that these issues show.
std::size_t MostLonger(const std::vector<Raised>& raised) { return raised.size() * 10 / mostHaveIt; }

// Of each kind of issue the time at which most of them come, if it may be a deadline.
std::vector<Candidate> TimesOf(const RaisedBySubject& bySubject, TaskIndex task, Ticks period, Ticks least) {
  std::vector<Candidate> times;
  for (const auto& [subject, all] : bySubject) {
    Candidate one{task, subject, MostAtOneTime(all)};
    one.isPeriod = period > 0 && IsNear(one.Latest(), period);
    if ((one.raised.size() >= 2 || one.isPeriod) && one.Latest() >= least) times.push_back(std::move(one));
  }
  return times;
}

// The best deadline of the task that each kind of issue shows, if it shows any.
void AddCandidates(const Schedule& schedule, Habits& habits, TaskIndex task, IssuePointFinder& finder,
                   std::vector<Candidate>& candidates) {
  std::size_t end = 0;
  const RaisedBySubject bySubject = IssuesDuringJobs(schedule, task, end);
  if (bySubject.empty()) return;
  std::vector<Candidate> times =
      TimesOf(bySubject, task, habits.PeriodOf(task), habits.Execution(task).median);
  std::size_t most = 0;
  for (const Candidate& one : times) most = std::max(most, MostLonger(one.raised) + 1);
  const std::vector<Ticks> responses = LongestResponses(schedule.JobsOf(task), end, most);
  for (Candidate& one : times) {
    const Ticks length = one.Latest();
    const Ticks clearlyLate = length + length / partsOff + fewTicks;
    const auto longer = responses.end() - std::upper_bound(responses.begin(), responses.end(), clearlyLate);
    if (static_cast<std::size_t>(longer) > MostLonger(one.raised)) continue;
    const std::size_t fitting = CountAtMultiples(bySubject.at(one.issue), length);
    if (!one.isPeriod && IsMessage(schedule, finder, task, one.raised, fitting)) continue;
    candidates.push_back(std::move(one));
  }
}

}  // namespace

// An issue belongs to one task. Where the periods of two fit together, it comes at one time after the
// activation of either: then it is that of the task that has more of them, and of two the one that began
// later.
std::vector<std::vector<Deadline>> FindDeadlines(const Schedule& schedule, Habits& habits) {
  std::vector<std::vector<Deadline>> deadlines(schedule.TaskCount());
  std::vector<bool> taken(schedule.Issues().size());
  std::vector<Candidate> candidates;
  if (taken.empty()) return deadlines;
  IssuePointFinder finder(schedule);
  for (TaskIndex task = 0; task < schedule.TaskCount(); ++task)
    if (!schedule.IsIdle(task)) AddCandidates(schedule, habits, task, finder, candidates);
  std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
    return a.raised.size() != b.raised.size() ? a.raised.size() > b.raised.size() : a.Length() < b.Length();
  });
  for (const Candidate& candidate : candidates) {
    const auto isTaken = [&](const Raised& one) { return taken[one.issue]; };
    const auto lost =
        static_cast<std::size_t>(std::count_if(candidate.raised.begin(), candidate.raised.end(), isTaken));
    if (lost * 2 > candidate.raised.size()) continue;
    for (const Raised& one : candidate.raised) taken[one.issue] = true;
    deadlines[candidate.task].push_back({candidate.Length(), candidate.issue});
  }
  return deadlines;
}

}  // namespace analysis
