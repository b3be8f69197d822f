#include "budget.h"

#include <iterator>
#include <memory>

#include "pattern.h"
#include "walker.h"

namespace analysis {
namespace {

constexpr std::string_view statisticNames[] = {"min", "max", "mean",  "stddev", "p50",
                                               "p95", "p99", "p99.9", "jitter"};

// Counts issues or testpoints of one budget.
class MarkCount : public Visitor {
 public:
  MarkCount(const Lane& lane, const Budget& budget)
      : Visitor(wantsMarks | wantsMarkSubjects), atMost_(budget.atMost) {
    const Subjects& names = lane.Names();
    const ETLCatType kind = budget.measure == Budget::Measure::issues ? TLCatTimingIssue : TLCatTestpoint;
    counts_.resize(names.Tasks().size() + names.MarkSubjects().size());
    for (std::size_t i = names.Tasks().size(); i < counts_.size(); ++i) {
      const MarkSubject& subject = names.MarkSubjectOf(static_cast<SubjectIndex>(i));
      counts_[i] = subject.kind == kind && MatchesPattern(budget.pattern, subject.name);
      matches = matches || counts_[i];
    }
  }

  void OnMark(const Mark& mark) override {
    if (mark.subject == noSubject || !counts_[mark.subject]) return;
    count += 1;
    if (atMost_ && count > *atMost_ && !at) at = mark.time;
  }

  bool matches = false;
  double count = 0;
  std::optional<Ticks> at;

 private:
  std::optional<double> atMost_;
  std::vector<bool> counts_;  // by SubjectIndex
};

class Evaluation {
 public:
  Evaluation(const Lane& lane, const Conventions& conventions, const std::vector<Budget>& budgets)
      : lane_(lane), budgets_(budgets), statistics_(lane, conventions.idle) {
    std::vector<Visitor*> visitors{&statistics_};
    for (const Budget& budget : budgets) {
      latencies_.push_back(nullptr);
      marks_.push_back(nullptr);
      if (budget.measure == Budget::Measure::latency) {
        latencies_.back() = std::make_unique<Latencies>(lane, budget.begin, budget.end);
        visitors.push_back(latencies_.back().get());
      } else if (IsAboutMarks(budget)) {
        marks_.back() = std::make_unique<MarkCount>(lane, budget);
        visitors.push_back(marks_.back().get());
      }
    }
    Walk(lane, conventions, visitors);
  }

  Verdicts Result() {
    for (std::size_t i = 0; i < budgets_.size(); ++i) {
      const Budget& budget = budgets_[i];
      verdict_ = Verdict();
      verdict_.budget = i;
      if (budget.measure == Budget::Measure::coverage) {
        Judge(budget, lane_.Coverage());
      } else if (budget.measure == Budget::Measure::latency) {
        JudgeLatency(budget, *latencies_[i]);
      } else if (IsAboutMarks(budget)) {
        JudgeMarks(budget, *marks_[i]);
      } else {
        JudgeTasks(budget);
      }
    }
    return std::move(verdicts_);
  }

 private:
  static bool IsAboutMarks(const Budget& budget) {
    return budget.measure == Budget::Measure::issues || budget.measure == Budget::Measure::testpoints;
  }

  void JudgeTasks(const Budget& budget) {
    bool matches = false;
    for (TaskIndex task = 0; task < lane_.Tasks().size(); ++task) {
      if (!MatchesPattern(budget.pattern, lane_.Tasks()[task].name)) continue;
      matches = true;
      verdict_.task = task;
      if (budget.measure == Budget::Measure::load)
        Judge(budget, statistics_.LoadOf(task));
      else
        JudgeSummary(budget, statistics_.Tasks()[task].Of(budget.quantity).Summarize());
    }
    if (!matches) verdicts_.unmatched.push_back(verdict_.budget);
  }

  void JudgeLatency(const Budget& budget, const Latencies& latencies) {
    if (budget.begin.In(lane_.Names()).empty() || budget.end.In(lane_.Names()).empty())
      return verdicts_.unmatched.push_back(verdict_.budget);
    JudgeSummary(budget, latencies.Lengths().Summarize());
  }

  // An issue that never came up is not known to the log; there were none of it.
  void JudgeMarks(const Budget& budget, const MarkCount& marks) {
    if (!marks.matches && budget.measure == Budget::Measure::testpoints)
      return verdicts_.unmatched.push_back(verdict_.budget);
    Judge(budget, marks.count, marks.at);
  }

  void JudgeSummary(const Budget& budget, const Summary& summary) {
    if (summary.count == 0) return Judge(budget, std::nullopt);
    const bool isOfMin = budget.statistic == Statistic::min;
    Judge(budget, ValueOf(summary, budget.statistic), isOfMin ? summary.minAt : summary.maxAt);
  }

  void Judge(const Budget& budget, std::optional<double> value, std::optional<Ticks> at = std::nullopt) {
    const bool isTooSmall = value && budget.atLeast && *value < *budget.atLeast;
    const bool isTooLarge = value && budget.atMost && *value > *budget.atMost;
    verdict_.isMeasured = value.has_value();
    verdict_.isKept = !isTooSmall && !isTooLarge;
    verdict_.value = value.value_or(0);
    verdict_.limit = isTooSmall || !budget.atMost ? budget.atLeast.value_or(0) : *budget.atMost;
    verdict_.at = at;
    verdicts_.all.push_back(verdict_);
  }

  const Lane& lane_;
  const std::vector<Budget>& budgets_;
  Statistics statistics_;
  std::vector<std::unique_ptr<Latencies>> latencies_;  // by budget
  std::vector<std::unique_ptr<MarkCount>> marks_;      // by budget
  Verdict verdict_;
  Verdicts verdicts_;
};

}  // namespace

std::optional<Statistic> StatisticNamed(std::string_view name) {
  for (std::size_t i = 0; i < std::size(statisticNames); ++i)
    if (statisticNames[i] == name) return static_cast<Statistic>(i);
  return std::nullopt;
}

std::string_view NameOf(Statistic statistic) { return statisticNames[static_cast<std::size_t>(statistic)]; }

double ValueOf(const Summary& summary, Statistic statistic) {
  switch (statistic) {
    case Statistic::min: return static_cast<double>(summary.min);
    case Statistic::max: return static_cast<double>(summary.max);
    case Statistic::mean: return summary.mean;
    case Statistic::stddev: return summary.stddev;
    case Statistic::p50: return static_cast<double>(summary.p50);
    case Statistic::p95: return static_cast<double>(summary.p95);
    case Statistic::p99: return static_cast<double>(summary.p99);
    case Statistic::p999: return static_cast<double>(summary.p999);
    case Statistic::jitter: break;
  }
  return static_cast<double>(summary.max - summary.min);
}

Verdicts Evaluate(const Lane& lane, const Conventions& conventions, const std::vector<Budget>& budgets) {
  return Evaluation(lane, conventions, budgets).Result();
}

}  // namespace analysis
