// Budget files: limits that a recording has to keep, as TOML. docs/cli.md, Budget files, has the keys.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "analysedlane.h"
#include "analysis/budget.h"
#include "args.h"

namespace cli {

// A limit of a budget file. Times become ticks when the lane is known.
struct BudgetRule {
  analysis::Budget budget;  // of a time without its limits
  std::optional<TimePoint> atLeast;
  std::optional<TimePoint> atMost;
  std::string lanes;  // shell pattern of the lanes that it is about; empty: all
  std::string place;  // "budgets.toml:12"

  // Throws Failure for seconds where the tick rate is unknown.
  analysis::Budget For(const AnalysedLane& lane) const;
  // "tasks 'Axis*'", for the message that there is nothing of the kind.
  std::string Subject() const;
};

// Throws UsageError: file, line, what was expected.
std::vector<BudgetRule> ReadBudgetFile(const std::string& path);

// A budget file that says what the budgets say; those of one task follow each other. `ticksPerSecond` may be
// 0 for unknown.
std::string BudgetFileText(const std::vector<analysis::Budget>& budgets, std::uint64_t ticksPerSecond);

}  // namespace cli
