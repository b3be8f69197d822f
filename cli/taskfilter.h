// The tasks that --task selects.
#pragma once

#include <string>
#include <vector>

#include "analysis/lane.h"

namespace cli {

// Which tasks are to be shown, and which patterns have found none so far.
class TaskFilter {
 public:
  explicit TaskFilter(const std::vector<std::string>& patterns)
      : patterns_(patterns), found_(patterns.size()) {}

  std::vector<analysis::TaskIndex> Of(const analysis::Lane& lane);

  // Throws Failure when a pattern has found no task in any lane.
  void Finish() const;

 private:
  bool Matches(const std::string& name);

  std::vector<std::string> patterns_;
  std::vector<bool> found_;
  std::vector<std::string> seen_;
};

}  // namespace cli
