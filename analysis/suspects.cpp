#include "suspects.h"

#include <algorithm>
#include <iterator>

#include "overload.h"

namespace analysis {
namespace {

// Of the jobs of a task in a busy stretch one in so many is late at least, where it is overloaded.
constexpr std::size_t overloadedJobs = 10;
constexpr std::size_t fewestOverloaded = 3;
// Longer rows of tasks that activate each other are not followed.
constexpr std::size_t mostSteps = 8;

class Finder {
 public:
  Finder(const Schedule& schedule, Habits& habits, const Question& question)
      : schedule_(schedule), habits_(habits), question_(question) {
    found_.late.resize(schedule.TaskCount());
  }

  Suspects Run() {
    question_.AsksForJobs() ? FindAsked() : FindLate();
    return std::move(found_);
  }

 private:
  void FindAsked() {
    for (const PastMark& issue : schedule_.Issues())
      if (std::binary_search(question_.issues.begin(), question_.issues.end(), issue.subject))
        askedTimes_.push_back(issue.time);
    for (TaskIndex task = 0; task < schedule_.TaskCount(); ++task) {
      if (schedule_.IsIdle(task) || (question_.task != noTask && question_.task != task)) continue;
      const std::vector<PastJob>& jobs = schedule_.JobsOf(task);
      const Ticks usual = habits_.Response(task).threeQuarters;
      for (std::size_t i = 0; i < jobs.size(); ++i) {
        if (!IsAskedFor(jobs[i])) continue;
        ++found_.asked;
        if (jobs[i].Response() > usual) found_.late[task].push_back({task, i, LateSign::asked, noSubject});
      }
    }
  }

  bool IsAskedFor(const PastJob& job) const {
    if (!job.isWhole) return false;
    if (question_.over && job.Response() <= *question_.over) return false;
    if (question_.at && (job.activation > *question_.at || job.end < *question_.at)) return false;
    return question_.issues.empty() || HasIssue(job);
  }

  bool HasIssue(const PastJob& job) const {
    const auto issue = std::lower_bound(askedTimes_.begin(), askedTimes_.end(), job.activation);
    return issue != askedTimes_.end() && *issue <= job.end;
  }

  void FindLate() {
    deadlines_ = FindDeadlines(schedule_, habits_);
    const std::vector<Stretch> busy = FindBusyStretches(schedule_, habits_, deadlines_);
    if (!busy.empty()) ForEachTask([&](TaskIndex task) { FindOverload(task, busy); });
    ForEachTask([&](TaskIndex task) {
      found_.late[task] = FindLateJobs(schedule_, habits_, task, deadlines_[task], found_.overloaded.empty());
    });
    for (std::size_t step = 0; step < mostSteps && PassOn(); ++step) {
    }
  }

  // Where the lane has no time to spare and a task misses its time again and again.
  void FindOverload(TaskIndex task, const std::vector<Stretch>& busy) {
    const std::vector<LateJob> late = FindLateJobs(schedule_, habits_, task, deadlines_[task], false);
    for (const Stretch& stretch : busy) {
      const auto [first, last] = schedule_.JobsIn(task, stretch);
      std::size_t certain = 0;
      for (const LateJob& one : late) certain += one.IsCertain() && one.place >= first && one.place < last;
      const bool isOverloaded = certain >= fewestOverloaded && certain * overloadedJobs >= last - first;
      if (isOverloaded && !found_.IsOverloadedAt(stretch.from)) found_.overloaded.push_back(stretch);
    }
  }

  // What a task activates that came late comes late as well, though its intervals may vary too much to show
  // it.
  bool PassOn() {
    bool any = false;
    ForEachTask([&](TaskIndex task) {
      const Activator by = habits_.ActivatorOf(task);
      if (by.by == Activator::By::task && by.task != task) any |= PassOn(by.task, task);
    });
    return any;
  }

  bool PassOn(TaskIndex from, TaskIndex to) {
    const std::vector<LateJob>& late = found_.late[to];
    const std::vector<PastJob>& jobs = schedule_.JobsOf(to);
    const auto isBefore = [](const LateJob& a, const LateJob& b) { return a.place < b.place; };
    std::vector<LateJob> added;
    for (const LateJob& one : found_.late[from]) {
      if (!one.IsActivation()) continue;
      const PastJob& job = schedule_.JobsOf(from)[one.place];
      const Ticks least = habits_.Interval(to).median + (job.interval - habits_.Interval(from).median) / 2;
      for (auto [i, last] = schedule_.JobsIn(to, {job.activation, job.end + 1}); i < last; ++i) {
        const LateJob next{to, i, LateSign::interval, noSubject};
        const bool isLate = jobs[i].activator == from && jobs[i].interval > least;
        const bool isAdded = !added.empty() && added.back().place >= i;
        if (!isLate || isAdded || std::binary_search(late.begin(), late.end(), next, isBefore)) continue;
        added.push_back(next);
      }
    }
    std::vector<LateJob> all;
    std::merge(late.begin(), late.end(), added.begin(), added.end(), std::back_inserter(all), isBefore);
    found_.late[to] = std::move(all);
    return !added.empty();
  }

  template <class Use>
  void ForEachTask(Use use) {
    for (TaskIndex task = 0; task < schedule_.TaskCount(); ++task)
      if (!schedule_.IsIdle(task)) use(task);
  }

  const Schedule& schedule_;
  Habits& habits_;
  const Question& question_;
  std::vector<std::vector<Deadline>> deadlines_;  // by TaskIndex
  std::vector<Ticks> askedTimes_;                 // of the issues that were asked for
  Suspects found_;
};

}  // namespace

bool Suspects::IsOverloadedAt(Ticks time) const {
  return std::any_of(overloaded.begin(), overloaded.end(),
                     [time](const Stretch& one) { return time >= one.from && time <= one.to; });
}

Suspects FindSuspects(const Schedule& schedule, Habits& habits, const Question& question) {
  return Finder(schedule, habits, question).Run();
}

}  // namespace analysis
