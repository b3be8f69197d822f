// Writes a budget file.
#include <fmt/format.h>

#include <cmath>

#include "budgetfile.h"
#include "text.h"

namespace cli {
namespace {

using analysis::Budget;
using analysis::Quantity;
using analysis::Statistic;

// As text that TOML takes. What is no harmless text is replaced, byte by byte, by a question mark, which
// stands for any byte.
std::string TomlPattern(std::string pattern) {
  if (!IsHarmless(pattern)) {
    for (char& byte : pattern) {
      if (byte < 0x20 || byte == 0x7F) byte = '?';  // a char may be signed: these are bytes from 0x80 on, too
    }
  }
  return JsonString(pattern);
}

// The largest unit that shows all digits: "123.4us".
std::string TimeText(double ticks, std::uint64_t ticksPerSecond) {
  const auto whole = static_cast<std::uint64_t>(ticks);
  constexpr std::uint64_t perSecond = 1'000'000'000;
  if (ticksPerSecond == 0) return std::to_string(whole);
  const Wide nanoseconds = Wide{whole} * perSecond / ticksPerSecond;
  if (perSecond % ticksPerSecond != 0 || nanoseconds >= Wide{100} * perSecond)
    return '"' + TimeFormat(0, ticksPerSecond).Length(whole) + "s\"";
  const auto count = static_cast<std::uint64_t>(nanoseconds);
  if (count < 1'000) return fmt::format("\"{}ns\"", count);
  const bool isLong = count >= 1'000'000;
  return fmt::format("\"{}{}\"", static_cast<double>(count) / (isLong ? 1e6 : 1e3), isLong ? "ms" : "us");
}

// "response = { max = "1.2ms" }"; `next` joins it when it is about the same quantity.
std::string QuantityLine(const Budget& budget, const Budget* next, std::uint64_t ticksPerSecond) {
  std::string limits;
  for (const Budget* one : {&budget, next}) {
    if (!one) continue;
    const double ticks = one->atMost ? *one->atMost : one->atLeast.value_or(0);
    limits += fmt::format("{}{} = {}", limits.empty() ? "" : ", ", NameOf(one->statistic),
                          TimeText(ticks, ticksPerSecond));
  }
  return fmt::format("{} = {{ {} }}\n", SnakeCase(NameOf(budget.quantity)), limits);
}

}  // namespace

std::string BudgetFileText(const std::vector<Budget>& budgets, std::uint64_t ticksPerSecond) {
  std::string text;
  for (std::size_t i = 0; i < budgets.size(); ++i) {
    const Budget& budget = budgets[i];
    if (i == 0 || budgets[i - 1].pattern != budget.pattern)
      text += fmt::format("\n[[task]]\nname = {}\n", TomlPattern(budget.pattern));
    if (budget.measure == Budget::Measure::load) {
      text += fmt::format("load = \"{} %\"\n", std::ceil(*budget.atMost * 1e4) / 1e2);
      continue;
    }
    const Budget* next = i + 1 < budgets.size() ? &budgets[i + 1] : nullptr;
    const bool joins = next && next->measure == Budget::Measure::quantity &&
                       next->pattern == budget.pattern && next->quantity == budget.quantity;
    text += QuantityLine(budget, joins ? next : nullptr, ticksPerSecond);
    i += joins;
  }
  return text;
}

}  // namespace cli
