// What a latency begins or ends with, as typed.
#pragma once

#include <string>
#include <vector>

#include "analysis/lane.h"
#include "analysis/selector.h"

namespace cli {

// One side of a latency, and whether some lane has it.
class LatencySide {
 public:
  // Throws UsageError, which begins with `option`.
  LatencySide(const char* option, const std::string& text);

  const analysis::Selector& Which() const { return selector_; }
  bool IsIn(const analysis::Lane& lane);
  // After the last lane. Throws Failure when no lane has it.
  void Finish() const;

 private:
  void Remember(const analysis::Subjects& names);

  analysis::Selector selector_;
  bool isKnown_ = false;
  std::vector<std::string> seen_;
};

}  // namespace cli
