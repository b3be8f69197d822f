#include "budgetfile.h"

#include <fmt/format.h>
#include <toml++/toml.h>

#include <algorithm>
#include <iterator>

#include "failure.h"
#include "text.h"
#include "tomlvalues.h"

namespace cli {
namespace {

using analysis::Budget;
using analysis::Quantity;
using analysis::Selector;
using analysis::Statistic;

constexpr Quantity quantities[] = {Quantity::execution, Quantity::response, Quantity::startLatency,
                                   Quantity::activationInterval, Quantity::run};
constexpr Statistic statistics[] = {Statistic::min,    Statistic::max,  Statistic::mean,
                                    Statistic::stddev, Statistic::p50,  Statistic::p95,
                                    Statistic::p99,    Statistic::p999, Statistic::jitter};

class BudgetReader {
 public:
  explicit BudgetReader(const std::string& path) : path_(path), values_(path) {}

  std::vector<BudgetRule> Read() {
    const toml::table file = values_.Parse();
    values_.RefuseOthers(file, {"task", "latency", "issue", "testpoint", "coverage"});
    values_.ForEachTable(file, "task", [this](const toml::table& table) { ReadTask(table); });
    values_.ForEachTable(file, "latency", [this](const toml::table& table) { ReadLatency(table); });
    values_.ForEachTable(file, "issue",
                         [this](const toml::table& table) { ReadMarks(table, Budget::Measure::issues); });
    values_.ForEachTable(file, "testpoint",
                         [this](const toml::table& table) { ReadMarks(table, Budget::Measure::testpoints); });
    ReadCoverage(file);
    if (rules_.empty())
      throw UsageError(SafeText(path_) + ": expected at least one limit, such as those of [[task]]");
    return std::move(rules_);
  }

 private:
  BudgetRule NewRule(const toml::table& table, Budget::Measure measure) const {
    BudgetRule rule;
    rule.budget.measure = measure;
    rule.place = fmt::format("{}:{}", path_, table.source().begin.line);
    if (table.contains("lane")) rule.lanes = values_.Text(table, "lane", "a shell pattern of lanes");
    return rule;
  }

  void ReadTask(const toml::table& table) {
    std::vector<std::string> keys{"name", "lane", "load"};
    for (const Quantity quantity : quantities) keys.push_back(SnakeCase(NameOf(quantity)));
    values_.RefuseOthers(table, keys);
    BudgetRule rule = NewRule(table, Budget::Measure::load);
    rule.budget.pattern = values_.Text(table, "name", "a shell pattern of tasks");
    const std::size_t before = rules_.size();
    if (const toml::node* load = table.get("load")) {
      rule.budget.atMost = values_.Share(*load, "load");
      rules_.push_back(rule);
      rule.budget.atMost.reset();
    }
    rule.budget.measure = Budget::Measure::quantity;
    for (const Quantity quantity : quantities) {
      rule.budget.quantity = quantity;
      const std::string key = SnakeCase(NameOf(quantity));
      if (const toml::node* limits = table.get(key)) ReadQuantity(*limits, key, rule);
    }
    if (rules_.size() == before)
      values_.Fail(table.source(), "[[task]]: expected a limit, such as response = \"2ms\"");
  }

  void ReadQuantity(const toml::node& node, const std::string& key, const BudgetRule& rule) {
    const toml::table* table = node.as_table();
    if (!table) return AddTime(rule, Statistic::max, values_.Time(node, key));
    std::vector<std::string> keys;
    for (const Statistic statistic : statistics) keys.emplace_back(NameOf(statistic));
    if (rule.budget.quantity == Quantity::activationInterval)
      keys.insert(keys.end(), {"period", "tolerance"});
    values_.RefuseOthers(*table, keys);
    if (table->empty()) values_.Fail(node.source(), key + ": expected a limit, such as { max = \"2ms\" }");
    ReadStatistics(*table, rule);
    const toml::node* period = table->get("period");
    const toml::node* tolerance = table->get("tolerance");
    if (!period != !tolerance) values_.Fail(node.source(), "period and tolerance: expected both or none");
    if (period) AddTolerance(rule, values_.Time(*period, "period"), *tolerance);
  }

  void ReadStatistics(const toml::table& table, const BudgetRule& rule) {
    for (const Statistic statistic : statistics) {
      const std::string key(NameOf(statistic));
      if (const toml::node* limit = table.get(key)) AddTime(rule, statistic, values_.Time(*limit, key));
    }
  }

  void AddTime(BudgetRule rule, Statistic statistic, const TimePoint& limit) {
    rule.budget.statistic = statistic;
    (statistic == Statistic::min ? rule.atLeast : rule.atMost) = limit;
    rules_.push_back(std::move(rule));
  }

  // All intervals lie within period - tolerance and period + tolerance.
  void AddTolerance(const BudgetRule& rule, const TimePoint& period, const toml::node& node) {
    const auto text = node.value_exact<std::string>();
    const auto share = text ? ParsePercent(*text) : std::nullopt;
    TimePoint by;
    if (share && *share <= 1) {
      // In millionths, as exact as anybody types it.
      const auto millionths = static_cast<std::uint64_t>(*share * 1e6 + 0.5);
      if (period.ticks) by.ticks = static_cast<std::uint64_t>(Wide{*period.ticks} * millionths / 1'000'000);
      by.sinceStart.attoseconds = period.sinceStart.attoseconds / 1'000'000 * millionths;
    } else {
      by = values_.Time(node, "tolerance");
      if (by.ticks.has_value() != period.ticks.has_value())
        values_.Fail(node.source(),
                     "tolerance: expected a share such as \"10 %\", or a time in the unit of period");
    }
    AddTime(rule, Statistic::min, Sum(period, by, false));
    AddTime(rule, Statistic::max, Sum(period, by, true));
  }

  // Not below 0.
  static TimePoint Sum(TimePoint period, const TimePoint& by, bool add) {
    const auto apply = [add](auto& value, auto change) {
      value = add ? value + change : value - std::min(value, change);
    };
    if (period.ticks) apply(*period.ticks, *by.ticks);
    apply(period.sinceStart.attoseconds, by.sinceStart.attoseconds);
    return period;
  }

  void ReadLatency(const toml::table& table) {
    std::vector<std::string> keys{"begin", "end", "lane"};
    for (const Statistic statistic : statistics) keys.emplace_back(NameOf(statistic));
    values_.RefuseOthers(table, keys);
    BudgetRule rule = NewRule(table, Budget::Measure::latency);
    rule.budget.begin = ReadSelector(table, "begin");
    rule.budget.end = ReadSelector(table, "end");
    const std::size_t before = rules_.size();
    ReadStatistics(table, rule);
    if (rules_.size() == before)
      values_.Fail(table.source(), "[[latency]]: expected a limit, such as max = \"2ms\"");
  }

  Selector ReadSelector(const toml::table& table, const char* key) const {
    std::string mistake;
    const auto selector =
        Selector::Parse(values_.Text(table, key, "a selector such as \"testpoint:NAME\""), mistake);
    if (!selector) values_.Fail(table.get(key)->source(), fmt::format("{}: {}", key, mistake));
    return *selector;
  }

  void ReadMarks(const toml::table& table, Budget::Measure measure) {
    values_.RefuseOthers(table, {"name", "lane", "min", "max"});
    BudgetRule rule = NewRule(table, measure);
    rule.budget.pattern = values_.Text(table, "name", "a shell pattern of names");
    rule.budget.atLeast = values_.Count(table, "min");
    rule.budget.atMost = values_.Count(table, "max");
    if (!rule.budget.atLeast && !rule.budget.atMost)
      values_.Fail(table.source(), "expected min, max or both, such as max = 0");
    rules_.push_back(std::move(rule));
  }

  void ReadCoverage(const toml::table& file) {
    const toml::node* node = file.get("coverage");
    if (!node) return;
    const toml::table* table = node->as_table();
    if (!table || !table->contains("min"))
      values_.Fail(node->source(), "[coverage]: expected min = \"99 %\" or the like");
    values_.RefuseOthers(*table, {"lane", "min"});
    BudgetRule rule = NewRule(*table, Budget::Measure::coverage);
    rule.budget.atLeast = values_.Share(*table->get("min"), "min");
    rules_.push_back(std::move(rule));
  }

  std::string path_;
  TomlValues values_;
  std::vector<BudgetRule> rules_;
};

double TicksOf(const TimePoint& limit, const AnalysedLane& lane, const std::string& place) {
  if (limit.ticks) return static_cast<double>(*limit.ticks);
  const std::uint64_t rate = lane.lane.TicksPerSecond();
  if (rate != 0) return static_cast<double>(limit.sinceStart.Ticks(rate));
  throw Failure(fmt::format("{}: the tick rate of {} is unknown, so limits are numbers of ticks",
                            SafeText(place), Quoted(lane.source.shownAs)));
}

}  // namespace

Budget BudgetRule::For(const AnalysedLane& lane) const {
  Budget of = budget;
  if (atLeast) of.atLeast = TicksOf(*atLeast, lane, place);
  if (atMost) of.atMost = TicksOf(*atMost, lane, place);
  return of;
}

std::string BudgetRule::Subject() const {
  switch (budget.measure) {
    case Budget::Measure::latency:
      return fmt::format("{} and {}", Quoted(budget.begin.Text()), Quoted(budget.end.Text()));
    case Budget::Measure::issues: return "issue " + Quoted(budget.pattern);
    case Budget::Measure::testpoints: return "testpoint " + Quoted(budget.pattern);
    case Budget::Measure::coverage: return "lane " + Quoted(lanes);
    default: return "task " + Quoted(budget.pattern);
  }
}

std::vector<BudgetRule> ReadBudgetFile(const std::string& path) { return BudgetReader(path).Read(); }

}  // namespace cli
