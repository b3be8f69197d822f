// Verdicts for people, and what all formats share.
#include "checkformat.h"

#include <algorithm>
#include <utility>

#include "entriesaround.h"
#include "summaryformat.h"
#include "text.h"
#include "texttable.h"

namespace cli {
namespace {

using analysis::Budget;
using analysis::Verdict;

constexpr const char* red = "\x1b[31m";
constexpr const char* plain = "\x1b[0m";

// A value or a limit as its measure has it.
std::string Number(const Budget& budget, double value, const AnalysedLane& lane) {
  switch (budget.measure) {
    case Budget::Measure::load:
    case Budget::Measure::coverage: return Percent(value);
    case Budget::Measure::issues:
    case Budget::Measure::testpoints: return fmt::format("{:.0f}", value);
    default: return fmt::format("{} {}", lane.LengthText(NearestTick(value)), lane.Unit());
  }
}

// The stretch of time that a verdict is about: a job from its activation, an interval to its end.
std::pair<std::uint64_t, std::uint64_t> StretchOf(const Check& check) {
  const std::uint64_t at = *check.verdict.at;
  const bool isTime =
      check.budget.measure == Budget::Measure::quantity || check.budget.measure == Budget::Measure::latency;
  if (!isTime) return {at, at};
  const std::uint64_t length = NearestTick(check.verdict.value);
  const bool endsThere = check.budget.measure == Budget::Measure::quantity &&
                         check.budget.quantity == analysis::Quantity::activationInterval;
  if (endsThere) return {at - std::min(at, length), at};
  return {at, at + std::min(length, UINT64_MAX - at)};
}

class CheckText : public CheckFormat {
 public:
  CheckText(fmt::memory_buffer& out, bool colors) : out_(out), colors_(colors) {}

  void Add(const LaneChecks& lane) override {
    out_.append(std::string_view(std::exchange(separator_, "\n")));
    AddLaneText(out_, lane.source);
    const CheckCounts counts = CountChecks(lane.checks);
    Print(fmt::format("  budgets       {} kept, {} broken", counts.kept, counts.broken));
    Print(counts.notMeasured == 0 ? "\n" : fmt::format(", {} not measured\n", counts.notMeasured));
    std::size_t shown = 0;
    for (const Check& check : lane.checks) {
      const std::string name = SafeText(NameOf(check, lane.source));
      if (!check.verdict.isMeasured) Print(fmt::format("  not measured  {}: the log has no value\n", name));
      if (check.verdict.isKept) continue;
      Print(fmt::format("  {}broken{}        {}: {}\n", colors_ ? red : "", colors_ ? plain : "", name,
                        Outcome(check, lane.source)));
      if (++shown <= mostWithEntries) Print(EntriesOf(check, lane.source, "    "));
    }
  }

 private:
  static constexpr std::size_t mostWithEntries = 20;

  void Print(std::string_view text) { out_.append(text); }

  fmt::memory_buffer& out_;
  bool colors_;
  const char* separator_ = "";
};

}  // namespace

CheckCounts CountChecks(const std::vector<Check>& checks) {
  CheckCounts counts;
  for (const Check& check : checks) {
    counts.notMeasured += !check.verdict.isMeasured;
    counts.broken += !check.verdict.isKept;
    counts.kept += check.verdict.isMeasured && check.verdict.isKept;
  }
  return counts;
}

std::string NameOf(const Check& check, const AnalysedLane& lane) {
  const Budget& budget = check.budget;
  const std::string task =
      check.verdict.task == analysis::noTask ? "" : lane.lane.Tasks()[check.verdict.task].name;
  switch (budget.measure) {
    case Budget::Measure::load: return task + " load";
    case Budget::Measure::coverage: return "coverage";
    case Budget::Measure::issues: return "issue " + budget.pattern;
    case Budget::Measure::testpoints: return "testpoint " + budget.pattern;
    case Budget::Measure::latency:
      return fmt::format("{} to {} {}", budget.begin.Text(), budget.end.Text(), NameOf(budget.statistic));
    case Budget::Measure::quantity: break;
  }
  return fmt::format("{} {} {}", task, NameOf(budget.quantity), NameOf(budget.statistic));
}

bool IsUpperLimit(const Check& check) {
  const bool isBelow = !check.verdict.isKept && check.verdict.value < check.verdict.limit;
  return check.budget.atMost && !isBelow;
}

std::string Outcome(const Check& check, const AnalysedLane& lane) {
  const Verdict& verdict = check.verdict;
  std::string text =
      fmt::format("{}, {} {}", Number(check.budget, verdict.value, lane),
                  IsUpperLimit(check) ? "at most" : "at least", Number(check.budget, verdict.limit, lane));
  if (verdict.at) text += fmt::format(", at {} {}", lane.TimeText(*verdict.at), lane.Unit());
  return text;
}

std::string EntriesOf(const Check& check, const AnalysedLane& lane, const std::string& indent) {
  if (!check.verdict.at) return {};
  const auto [from, to] = StretchOf(check);
  return EntriesAround(lane.loaded->log, from, to, indent);
}

std::unique_ptr<CheckFormat> MakeCheckText(fmt::memory_buffer& out, bool colors) {
  return std::make_unique<CheckText>(out, colors);
}

}  // namespace cli
