// Two recordings, or two sets of them, side by side: what moved, and whether that is more than noise.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "statistics.h"

namespace analysis {

// The statistics of one lane of a recording; all are borrowed.
struct LaneResult {
  std::string name;  // lanes of one name belong together
  const Lane* lane;
  const Statistics* statistics;
};

// How two series differ.
struct RankTest {
  double superiority = 0.5;  // share of pairs in which the later is the larger, equal ones by half
  double z = 0;              // how many standard errors that is from a half; values near each other in time
                             // may depend on each other
  bool IsNoise() const;
};
// Either series may be spread over several recordings.
RankTest CompareRanks(const std::vector<const Values*>& before, const std::vector<const Values*>& after);

// One quantity of one task.
struct Change {
  std::string lane;
  std::string task;
  Quantity quantity;
  Summary before;
  Summary after;
  RankTest test;
};

struct LoadChange {
  std::string lane;
  std::string task;
  std::optional<double> before;
  std::optional<double> after;
};

// In one of the two recordings alone. With an empty `task` the whole lane.
struct Missing {
  std::string lane;
  std::string task;
};

struct Comparison {
  std::vector<Change> changes;  // by how far the values moved, against their own spread; noise at the end
  std::vector<LoadChange> loads;
  std::vector<Missing> appeared;
  std::vector<Missing> vanished;
};

Comparison Compare(const std::vector<LaneResult>& before, const std::vector<LaneResult>& after);

}  // namespace analysis
