// The formats of `tasklog diff`. docs/cli.md, tasklog diff, has the text and CSV, docs/json.md the JSON.
#pragma once

#include <fmt/format.h>

#include <optional>
#include <string>
#include <vector>

#include "analysedlane.h"
#include "analysis/comparison.h"

namespace cli {

struct Difference {
  std::vector<AnalysedLane> before;
  std::vector<AnalysedLane> after;
  analysis::Comparison comparison;
  bool severalLanes = false;  // names of lanes tell tasks apart
};

// One number out of a change.
struct ChangedNumber {
  const char* name;    // for people
  const char* column;  // for programs
  std::uint64_t before;
  std::uint64_t after;

  // As a share of the number before; empty when that was 0 and is no more.
  std::optional<double> Rise() const;
};
std::vector<ChangedNumber> NumbersOf(const analysis::Change& change);

// What got worse by more than the share `over`, one line each; empty when nothing did. Noise never does.
std::vector<std::string> WorseBy(double over, const Difference& difference);

void AppendDiffText(fmt::memory_buffer& out, const Difference& difference, bool colors);
void AppendDiffCsv(fmt::memory_buffer& out, const Difference& difference);
void AppendDiffJson(fmt::memory_buffer& out, const Difference& difference);

}  // namespace cli
