// Which task activates which. docs/analysis.md, Who activates a task, has the rule.
#pragma once

#include "pastjob.h"

namespace analysis {

struct Activator {
  enum class By : std::uint8_t { notKnown, task, outside };  // outside: a timer, an interrupt, another lane
  By by = By::notKnown;
  TaskIndex task = noTask;
};

// `jobs`: all of one task, by time. A few passes.
Activator FindActivator(const std::vector<PastJob>& jobs);

}  // namespace analysis
