// Stretches in which a lane had no time to spare.
#pragma once

#include <vector>

#include "lateness.h"

namespace analysis {

// By time. Without an idle task, and where the tasks ask for more than there is, that is the lane as a whole.
std::vector<Stretch> FindBusyStretches(const Schedule& schedule, Habits& habits,
                                       const std::vector<std::vector<Deadline>>& deadlines);

}  // namespace analysis
