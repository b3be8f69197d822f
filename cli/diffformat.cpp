// A comparison for people, and what got worse.
#include "diffformat.h"

#include <algorithm>
#include <cmath>

#include "summaryformat.h"
#include "text.h"
#include "texttable.h"

namespace cli {
namespace {

using analysis::Change;
using analysis::Quantity;

void Print(fmt::memory_buffer& out, std::string_view text) { out.append(text); }

std::string FullName(const Difference& difference, const std::string& lane, const std::string& task) {
  if (task.empty()) return lane;
  return difference.severalLanes ? lane + "/" + task : task;
}

// "+12.34 %"; without a number before there is no share.
std::string RiseText(const std::optional<double>& rise) {
  return rise ? fmt::format("{:+.2f} %", *rise * 100) : "new";
}

// "+1.25 points" of a hundred.
std::string PointsText(double difference) {
  const double hundredths = std::round(difference * 1e4) + 0.0;  // no minus before a zero
  return fmt::format("{:+.2f} points", hundredths / 100);
}

void PrintSide(fmt::memory_buffer& out, const char* heading, const std::vector<AnalysedLane>& side) {
  for (const AnalysedLane& lane : side) {
    Print(out,
          fmt::format("{:<8}{}, coverage {}\n", heading, SafeText(lane.source.shownAs), CoverageText(lane)));
    heading = "";
  }
}

void PrintMissing(fmt::memory_buffer& out, const Difference& difference, const char* what,
                  const std::vector<analysis::Missing>& missing) {
  for (const analysis::Missing& one : missing) {
    Print(out, fmt::format("{} {} {}\n", what, one.task.empty() ? "lane" : "task",
                           Quoted(FullName(difference, one.lane, one.task))));
  }
}

// What is no noise with each of its numbers, then noise with its median.
void PrintChanges(fmt::memory_buffer& out, const Difference& difference, bool colors) {
  const AnalysedLane& any = difference.before.front();
  TextTable table({fmt::format("times in {}", any.Unit()), "", "", "before", "after", "change"}, 3);
  for (const Change& change : difference.comparison.changes) {
    std::string name = FullName(difference, change.lane, change.task);
    std::string quantity(NameOf(change.quantity));
    const bool isNoise = change.test.IsNoise();
    for (const ChangedNumber& number : NumbersOf(change)) {
      table.Add({std::move(name), std::move(quantity), number.name, any.LengthText(number.before),
                 any.LengthText(number.after), isNoise ? "noise" : RiseText(number.Rise())});
      name = quantity = "";
      if (isNoise) break;
    }
  }
  if (difference.comparison.changes.empty()) return;
  Print(out, "\n");
  table.Print(out, colors);
}

void PrintLoads(fmt::memory_buffer& out, const Difference& difference) {
  TextTable table({"load", "before", "after", "change"});
  for (const analysis::LoadChange& load : difference.comparison.loads) {
    const bool both = load.before && load.after;
    table.Add({FullName(difference, load.lane, load.task), load.before ? Percent(*load.before) : noValue,
               load.after ? Percent(*load.after) : noValue,
               both ? PointsText(*load.after - *load.before) : noValue});
  }
  if (difference.comparison.loads.empty()) return;
  Print(out, "\n");
  table.Print(out, false);
}

// By which share a number got worse: more is worse, but of an interval the median either way, and the
// shortest when it is less.
double Worsening(Quantity quantity, const ChangedNumber& number, double rise) {
  if (quantity != Quantity::activationInterval) return rise;
  if (std::string_view(number.column) == "p50") return std::abs(rise);
  return std::string_view(number.column) == "min" ? -rise : rise;
}

std::optional<std::string> WorstOf(const Change& change, double over) {
  if (change.test.IsNoise() || change.quantity == Quantity::run) return std::nullopt;
  std::optional<std::string> worst;
  double most = over;
  for (const ChangedNumber& number : NumbersOf(change)) {
    // Where some values were more than 0 before, a larger number says how much worse it got.
    if (!number.Rise() && change.before.max != 0) continue;
    const double rise = number.Rise().value_or(INFINITY);
    const double worse = Worsening(change.quantity, number, rise);
    if (worse <= most) continue;
    most = worse;
    worst = fmt::format("{} {} {}", NameOf(change.quantity), number.name, RiseText(number.Rise()));
  }
  return worst;
}

}  // namespace

std::optional<double> ChangedNumber::Rise() const {
  if (before == after) return 0;
  if (before == 0) return std::nullopt;
  return static_cast<double>(after) / static_cast<double>(before) - 1;
}

std::vector<ChangedNumber> NumbersOf(const Change& change) {
  const analysis::Summary& a = change.before;
  const analysis::Summary& b = change.after;
  std::vector<ChangedNumber> numbers{{"median", "p50", a.p50, b.p50}};
  if (change.quantity == Quantity::activationInterval) numbers.push_back({"shortest", "min", a.min, b.min});
  numbers.push_back({"95 %", "p95", a.p95, b.p95});
  numbers.push_back({"99 %", "p99", a.p99, b.p99});
  numbers.push_back({"longest", "max", a.max, b.max});
  return numbers;
}

std::vector<std::string> WorseBy(double over, const Difference& difference) {
  std::vector<std::string> worse;
  for (const analysis::Missing& one : difference.comparison.vanished)
    worse.push_back(Quoted(FullName(difference, one.lane, one.task)) + " vanished");
  for (const analysis::Missing& one : difference.comparison.stalled)
    worse.push_back(Quoted(FullName(difference, one.lane, one.task)) + " completes no job any more");
  for (const Change& change : difference.comparison.changes) {
    if (const auto worst = WorstOf(change, over))
      worse.push_back(Quoted(FullName(difference, change.lane, change.task)) + " " + *worst);
  }
  return worse;
}

void AppendDiffText(fmt::memory_buffer& out, const Difference& difference, bool colors) {
  PrintSide(out, "before", difference.before);
  PrintSide(out, "after", difference.after);
  PrintMissing(out, difference, "appeared", difference.comparison.appeared);
  PrintMissing(out, difference, "vanished", difference.comparison.vanished);
  PrintMissing(out, difference, "completes no job any more:", difference.comparison.stalled);
  PrintChanges(out, difference, colors);
  PrintLoads(out, difference);
}

}  // namespace cli
