// Budgets: limits that a lane keeps or breaks.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "latency.h"
#include "meanings.h"
#include "statistics.h"

namespace analysis {

// One number out of a series.
enum class Statistic : std::uint8_t { min, max, mean, stddev, p50, p95, p99, p999, jitter };
std::optional<Statistic> StatisticNamed(std::string_view name);  // "max", "p99.9", ...
std::string_view NameOf(Statistic statistic);
double ValueOf(const Summary& summary, Statistic statistic);  // jitter: max - min

struct Budget {
  enum class Measure : std::uint8_t { quantity, load, latency, issues, testpoints, coverage };

  std::string name;  // what reports call it
  Measure measure = Measure::quantity;
  std::string pattern;                     // quantity, load: of tasks; issues, testpoints: of their names
  Quantity quantity = Quantity::response;  // quantity
  Statistic statistic = Statistic::max;    // quantity, latency
  Selector begin = {};                     // latency
  Selector end = {};                       // latency
  // At least one of them: ticks; of load and coverage a share, 0 to 1; of issues and testpoints a count.
  std::optional<double> atLeast = {};
  std::optional<double> atMost = {};
};

// What a budget came to, for one task where it is about tasks.
struct Verdict {
  std::size_t budget = 0;   // index in the list given
  TaskIndex task = noTask;  // quantity, load
  bool isMeasured = true;   // false: the lane holds no value, so the budget is neither kept nor broken
  bool isKept = true;
  double value = 0;
  double limit = 0;         // the one that is broken, else the only one or the upper
  std::optional<Ticks> at;  // the job, run or latency that is the smallest (min) or the largest; the first
                            // issue or testpoint beyond the limit
};

struct Verdicts {
  std::vector<Verdict> all;            // in the order of the budgets, then of the tasks
  std::vector<std::size_t> unmatched;  // budgets that select no task, issue, testpoint or moment of this lane
};

// Walks the lane once.
Verdicts Evaluate(const Lane& lane, const Conventions& conventions, const std::vector<Budget>& budgets);

// One of the good logs from which to suggest budgets; borrowed.
struct Example {
  const Lane* lane;
  const Statistics* statistics;
};

// Budgets that the examples keep with room to spare: for each task on load, execution, response, start
// latency and activation interval, each limit by the share `margin` beyond what was seen, in whole ticks.
// Tasks of one name are taken together; a task that is the idle task of an example has none.
std::vector<Budget> Suggest(const std::vector<Example>& examples, double margin);

}  // namespace analysis
