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

// How two series differ. Values near each other in time may depend on each other, so errors are estimated
// from the means of stretches and not from single values.
struct RankTest {
  double superiority = 0.5;    // share of pairs in which the later is the larger; equal ones count by half
  double z = 0;                // how many standard errors that is from a half
  double tailZ = 0;            // the same for the share of values beyond 99 % of all values
  std::uint64_t outliers = 0;  // values of one side far outside of all of the other

  bool IsNoise() const;
  double Strength() const;  // to order by: 0 for no difference
};
// Either side may be spread over several recordings. Time: n log n; memory: 8 bytes a value.
RankTest CompareRanks(const std::vector<const Values*>& before, const std::vector<const Values*>& after);

// One quantity of one task that has values on both sides.
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

// On one side alone. With an empty `task` the whole lane.
struct Missing {
  std::string lane;
  std::string task;
};

struct Comparison {
  std::vector<Change> changes;    // what moved most in front, noise at the end
  std::vector<LoadChange> loads;  // in the order of the lanes and tasks before
  std::vector<Missing> appeared;
  std::vector<Missing> vanished;
  std::vector<Missing> stalled;  // tasks on both sides that completed jobs before and complete none after
};

// Tasks are matched by name; those that have neither run nor had a job are left out.
Comparison Compare(const std::vector<LaneResult>& before, const std::vector<LaneResult>& after);

}  // namespace analysis
