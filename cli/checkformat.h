// The formats of `tasklog check`. docs/cli.md, tasklog check, has the text and JUnit, docs/json.md the JSON.
#pragma once

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "analysedlane.h"
#include "budgetfile.h"

namespace cli {

struct Check {
  const BudgetRule& rule;
  analysis::Budget budget;  // with the limits in ticks
  analysis::Verdict verdict;
};

struct LaneChecks {
  const AnalysedLane& source;
  std::vector<Check> checks;
};

// Lane after lane, then the end.
class CheckFormat {
 public:
  virtual ~CheckFormat() = default;
  virtual void Add(const LaneChecks& lane) = 0;
  virtual void End() {}
};

// Everything goes into `out`, which must outlive the format.
std::unique_ptr<CheckFormat> MakeCheckText(fmt::memory_buffer& out, bool colors);
std::unique_ptr<CheckFormat> MakeCheckJson(fmt::memory_buffer& out, const std::string& budgetFile);
std::unique_ptr<CheckFormat> MakeCheckJunit(fmt::memory_buffer& out);

// What the formats share.
struct CheckCounts {
  std::size_t kept = 0;
  std::size_t broken = 0;
  std::size_t notMeasured = 0;
};
CheckCounts CountChecks(const std::vector<Check>& checks);
// "CurrentLoop response p99".
std::string NameOf(const Check& check, const AnalysedLane& lane);
// "0.001890 s, at most 0.001000 s, at 0.023000 s".
std::string Outcome(const Check& check, const AnalysedLane& lane);
bool IsUpperLimit(const Check& check);  // of the limit in the verdict
// The entries around what broke a budget; empty when no moment did.
std::string EntriesOf(const Check& check, const AnalysedLane& lane, const std::string& indent);

}  // namespace cli
