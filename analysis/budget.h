// Budgets: limits that a lane keeps or breaks.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "latency.h"
#include "statistics.h"

namespace analysis {

// One number out of a series.
enum class Statistic : std::uint8_t { min, max, mean, stddev, p50, p95, p99, p999, jitter };
std::optional<Statistic> StatisticNamed(std::string_view name);  // "p99.9", "max", ...
std::string_view NameOf(Statistic statistic);
double ValueOf(const Summary& summary, Statistic statistic);  // jitter: max - min

struct Budget {
  enum class Measure : std::uint8_t { quantity, load, latency, issues, testpoints, coverage };

  std::string name;  // what reports call it
  Measure measure = Measure::quantity;
  std::string tasks;                       // quantity, load: a pattern; the others: unused
  Quantity quantity = Quantity::response;  // quantity
  std::optional<Selector> begin;           // latency
  std::optional<Selector> end;             // latency
  std::string marks;                       // issues, testpoints: a pattern of their names
  Statistic statistic = Statistic::max;    // quantity, latency
  std::optional<double> atLeast;           // ticks; load and coverage: 0 to 1; issues, testpoints: a count
  std::optional<double> atMost;
};

// What a budget came to, for one task where it is about tasks.
struct Verdict {
  std::size_t budget;  // index in the list given
  TaskIndex task = noTask;
  bool measured = true;  // false: the log holds no value; then it is neither kept nor broken
  bool kept = true;
  double value = 0;
  double limit = 0;         // the one that is broken, else the nearest
  std::optional<Ticks> at;  // of a maximum or minimum, when the job, run, latency or mark was
};

struct Verdicts {
  std::vector<Verdict> all;            // in the order of the budgets, then of the tasks
  std::vector<std::size_t> unmatched;  // budgets that match no task, mark or selector of the lane
};

// Walks the lane once.
Verdicts Evaluate(const Lane& lane, const Conventions& conventions, const std::vector<Budget>& budgets);

// Budgets that the lanes keep with room to spare: for each task load, execution, response, start latency and
// activation interval, each limit a share `margin` beyond what was seen. Tasks of one name are taken
// together.
std::vector<Budget> Suggest(const std::vector<const Lane*>& lanes,
                            const std::vector<const Statistics*>& statistics, double margin);

}  // namespace analysis
