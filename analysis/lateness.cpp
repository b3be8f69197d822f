#include "lateness.h"

#include <algorithm>

namespace analysis {
namespace {

// A task that misses its time more often than this is not late now and then: it has too much to do, or its
// deadline means something else.
constexpr double mostCertain = 0.25;
// A response is conspicuous when it is that much longer than half of the others, and lies so many times the
// distance of the middle half of them above that.
constexpr double leastFactor = 1.5;
constexpr std::uint64_t quartileRanges = 4;
constexpr double mostConspicuous = 0.1;
constexpr std::uint64_t fewestJobs = 10;
// A job that comes late by less than half of its own response, or of a twentieth of its period, is not
// worth a word.
constexpr std::uint64_t leastPartOfInterval = 20;

class Search {
 public:
  Search(const Schedule& schedule, Habits& habits, TaskIndex task, const std::vector<Deadline>& deadlines)
      : deadlines_(deadlines),
        habits_(habits),
        task_(task),
        jobs_(schedule.JobsOf(task)),
        signs_(jobs_.size(), notLate),
        issues_(jobs_.size(), noSubject) {}

  std::vector<LateJob> Run(bool limited) {
    MarkBeyondPeriod();
    MarkDeadlines();
    if (limited) LimitCertain();
    MarkChange();
    MarkConspicuous();
    MarkOutliers();
    MarkIntervals();
    std::vector<LateJob> late;
    for (std::size_t i = 0; i < signs_.size(); ++i)
      if (signs_[i] != notLate) late.push_back({task_, i, static_cast<LateSign>(signs_[i]), issues_[i]});
    return late;
  }

 private:
  static constexpr std::uint8_t notLate = UINT8_MAX;

  struct ShownDeadline {
    Ticks length;
    std::size_t place;  // in deadlines_, of the last of those that are not longer
  };
  std::vector<ShownDeadline> ByLength() const {
    std::vector<ShownDeadline> sorted;
    for (std::size_t i = 0; i < deadlines_.size(); ++i) sorted.push_back({deadlines_[i].length, i});
    std::sort(sorted.begin(), sorted.end(),
              [](const ShownDeadline& a, const ShownDeadline& b) { return a.length < b.length; });
    std::size_t last = 0;
    for (ShownDeadline& one : sorted) one.place = last = std::max(last, one.place);
    return sorted;
  }

  void Mark(std::size_t place, LateSign sign) {
    signs_[place] = std::min(signs_[place], static_cast<std::uint8_t>(sign));
  }

  void MarkBeyondPeriod() {
    const Ticks period = habits_.PeriodOf(task_);
    if (period == 0) return;
    for (std::size_t i = 0; i < jobs_.size(); ++i)
      if (jobs_[i].isWhole && jobs_[i].Response() > period) Mark(i, LateSign::nextActivation);
  }

  // A job beyond several deadlines has the issue of the last that is given.
  void MarkDeadlines() {
    const std::vector<ShownDeadline> deadlines = ByLength();
    if (deadlines.empty()) return;
    for (std::size_t i = 0; i < jobs_.size(); ++i) {
      const Ticks response = jobs_[i].Response();
      const auto isExceeded = [&](const ShownDeadline& one) { return one.length < response; };
      const auto met = std::partition_point(deadlines.begin(), deadlines.end(), isExceeded);
      if (!jobs_[i].isWhole || met == deadlines.begin()) continue;
      Mark(i, LateSign::issue);
      issues_[i] = deadlines_[met[-1].place].issue;
    }
  }

  void LimitCertain() {
    const auto late = static_cast<std::size_t>(std::count_if(signs_.begin(), signs_.end(), IsLate));
    if (static_cast<double>(late) <= mostCertain * static_cast<double>(jobs_.size()) || late < 3) return;
    std::fill(signs_.begin(), signs_.end(), notLate);
  }

  void MarkChange() {
    const Ticks normal = habits_.NormalResponse(task_);
    for (std::size_t i = habits_.ChangeOf(task_); i < jobs_.size(); ++i)
      if (jobs_[i].isWhole && jobs_[i].Response() > normal) Mark(i, LateSign::change);
  }

  void MarkConspicuous() {
    const Usual& response = habits_.Response(task_);
    if (response.count < fewestJobs) return;
    const std::uint64_t middle = std::max<std::uint64_t>(response.threeQuarters - response.quarter, 1);
    const auto limit =
        std::max(static_cast<std::uint64_t>(leastFactor * static_cast<double>(response.median)),
                 response.threeQuarters + quartileRanges * middle);
    const auto isBeyond = [&](const PastJob& job) {
      return job.isWhole && (job.Response() > limit || response.IsHigh(job.Response()));
    };
    const auto count = static_cast<std::size_t>(std::count_if(jobs_.begin(), jobs_.end(), isBeyond));
    const bool isOften = static_cast<double>(count) > mostConspicuous * static_cast<double>(response.count);
    if (isOften && !habits_.AreOfGoodLog(task_)) return;
    for (std::size_t i = 0; i < jobs_.size(); ++i)
      if (isBeyond(jobs_[i])) Mark(i, LateSign::response);
  }

  void MarkOutliers() {
    const Usual& execution = habits_.Execution(task_);
    const Usual& waiting = habits_.Waiting(task_);
    for (std::size_t i = 0; i < jobs_.size(); ++i) {
      if (!jobs_[i].isWhole) continue;
      if (execution.IsHigh(jobs_[i].ExecutionOfCycle())) Mark(i, LateSign::execution);
      if (waiting.IsHigh(jobs_[i].waiting)) Mark(i, LateSign::waiting);
    }
  }

  void MarkIntervals() {
    const Usual& interval = habits_.Interval(task_);
    const Ticks period = habits_.PeriodOf(task_);
    if (period == 0) return;
    const Ticks room = std::max(
        {interval.high - interval.median, habits_.Response(task_).median / 2, period / leastPartOfInterval});
    for (std::size_t i = 1; i < jobs_.size(); ++i) {
      if (jobs_[i].interval <= interval.median + room || !interval.IsHigh(jobs_[i].interval)) continue;
      // Where the job before was still at work, that one is late, and not this.
      if (jobs_[i - 1].Response() < interval.median) Mark(i, LateSign::interval);
    }
  }

  static bool IsLate(std::uint8_t sign) { return sign != notLate; }

  const std::vector<Deadline>& deadlines_;
  Habits& habits_;
  TaskIndex task_;
  const std::vector<PastJob>& jobs_;
  std::vector<std::uint8_t> signs_;  // by place
  std::vector<SubjectIndex> issues_;
};

}  // namespace

std::string_view NameOf(LateSign sign) {
  static constexpr std::string_view names[] = {"asked",    "next-activation", "issue",   "change",
                                               "response", "execution",       "waiting", "interval"};
  return names[static_cast<std::size_t>(sign)];
}

std::vector<LateJob> FindLateJobs(const Schedule& schedule, Habits& habits, TaskIndex task,
                                  const std::vector<Deadline>& deadlines, bool limited) {
  return Search(schedule, habits, task, deadlines).Run(limited);
}

}  // namespace analysis
