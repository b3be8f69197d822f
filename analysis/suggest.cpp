// Budgets out of good logs.
#include <algorithm>
#include <cmath>
#include <map>

#include "budget.h"
#include "pattern.h"

namespace analysis {
namespace {

// What all examples came to for one name.
struct Seen {
  double load = 0;
  bool isIdle = false;
  std::array<std::optional<std::uint64_t>, quantityCount> largest;
  std::array<std::uint64_t, quantityCount> tail = {};  // how far the largest lay beyond 95 % of the values
  std::optional<std::uint64_t> shortestInterval;
};

void Take(Seen& seen, const Statistics& statistics, TaskIndex task) {
  seen.isIdle |= task == statistics.Idle();
  seen.load = std::max(seen.load, statistics.LoadOf(task).value_or(0));
  for (std::size_t i = 0; i < quantityCount; ++i) {
    const Values& values = statistics.Tasks()[task].values[i];
    if (values.Count() == 0) continue;
    seen.largest[i] = std::max(seen.largest[i].value_or(0), values.Max());
    seen.tail[i] = std::max(seen.tail[i], values.Max() - values.Percentile(95));
  }
  const Values& intervals = statistics.Tasks()[task].Of(Quantity::activationInterval);
  if (intervals.Count() > 0)
    seen.shortestInterval = std::min(seen.shortestInterval.value_or(UINT64_MAX), intervals.Min());
}

Budget QuantityBudget(const std::string& task, Quantity quantity, Statistic statistic) {
  Budget budget;
  budget.name = task + ' ' + std::string(NameOf(quantity)) + ' ' + std::string(NameOf(statistic));
  budget.pattern = PatternOf(task);
  budget.quantity = quantity;
  budget.statistic = statistic;
  return budget;
}

// How long a job waits for others depends on who falls together with whom: the longer its tail, the further
// the largest of the next log may lie beyond that of this one.
bool DependsOnOthers(Quantity quantity) {
  return quantity == Quantity::response || quantity == Quantity::startLatency;
}

void AddBudgets(std::vector<Budget>& budgets, const std::string& task, const Seen& seen, double margin) {
  Budget load;
  load.name = task + " load";
  load.measure = Budget::Measure::load;
  load.pattern = PatternOf(task);
  load.atMost = std::min(1.0, seen.load * (1 + margin));
  budgets.push_back(load);
  for (const Quantity quantity :
       {Quantity::execution, Quantity::response, Quantity::startLatency, Quantity::activationInterval}) {
    const auto place = static_cast<std::size_t>(quantity);
    const auto& largest = seen.largest[place];
    if (!largest || *largest == 0) continue;  // of nothing no margin can be taken: one tick would break it
    budgets.push_back(QuantityBudget(task, quantity, Statistic::max));
    const double tail = DependsOnOthers(quantity) ? static_cast<double>(seen.tail[place]) : 0;
    budgets.back().atMost = std::ceil(static_cast<double>(*largest) * (1 + margin) + tail);
  }
  if (!seen.shortestInterval) return;
  const double shortest = std::floor(static_cast<double>(*seen.shortestInterval) * (1 - margin));
  if (shortest <= 0) return;
  budgets.push_back(QuantityBudget(task, Quantity::activationInterval, Statistic::min));
  budgets.back().atLeast = shortest;
}

}  // namespace

std::vector<Budget> Suggest(const std::vector<Example>& examples, double margin) {
  std::map<std::string, Seen> byName;
  std::vector<std::string> order;  // as the lanes have them
  for (const Example& example : examples) {
    const std::vector<Task>& tasks = example.lane->Tasks();
    for (TaskIndex task = 0; task < tasks.size(); ++task) {
      if (example.statistics->Tasks()[task].jobs == 0 && task != example.statistics->Idle()) continue;
      const auto [place, isNew] = byName.emplace(tasks[task].name, Seen());
      if (isNew) order.push_back(tasks[task].name);
      Take(place->second, *example.statistics, task);
    }
  }
  std::vector<Budget> budgets;
  for (const std::string& name : order)
    if (!byName[name].isIdle) AddBudgets(budgets, name, byName[name], margin);
  return budgets;
}

}  // namespace analysis
