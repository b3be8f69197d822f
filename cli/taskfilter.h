// --task of commands that take shell patterns.
#pragma once

#include <string>
#include <vector>

#include "analysis/lane.h"

namespace cli {

class OptionList;

void DeclareTaskPatterns(
    OptionList& list, std::vector<std::string>& patterns,
    const char* help = "Only tasks whose names match this shell pattern; may be\nrepeated");

// Which tasks are meant, and which patterns have found none so far.
class TaskFilter {
 public:
  // Without patterns all tasks are meant.
  explicit TaskFilter(const std::vector<std::string>& patterns);

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
