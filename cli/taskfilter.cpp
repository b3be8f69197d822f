#include "taskfilter.h"

#include "analysis/pattern.h"
#include "failure.h"
#include "options.h"
#include "suggest.h"
#include "text.h"

namespace cli {

void DeclareTaskPatterns(OptionList& list, std::vector<std::string>& patterns, const char* help) {
  list.Add("--task", &patterns, help, "PATTERN");
}

using analysis::TaskIndex;

TaskFilter::TaskFilter(const std::vector<std::string>& patterns)
    : patterns_(patterns), found_(patterns.size()) {}

std::vector<TaskIndex> TaskFilter::Of(const analysis::Lane& lane) {
  std::vector<TaskIndex> tasks;
  for (TaskIndex task = 0; task < lane.Tasks().size(); ++task) {
    if (Matches(lane.Tasks()[task].name)) tasks.push_back(task);
    if (!patterns_.empty()) seen_.push_back(lane.Tasks()[task].name);
  }
  return tasks;
}

void TaskFilter::Finish() const {
  for (std::size_t i = 0; i < patterns_.size() && !seen_.empty(); ++i) {
    if (!found_[i])
      throw Failure("--task: no task matches " + Quoted(patterns_[i]) + Suggestion(patterns_[i], seen_));
  }
}

bool TaskFilter::Matches(const std::string& name) {
  bool any = patterns_.empty();
  for (std::size_t i = 0; i < patterns_.size(); ++i) {
    if (!analysis::MatchesPattern(patterns_[i], name)) continue;
    found_[i] = true;
    any = true;
  }
  return any;
}

}  // namespace cli
