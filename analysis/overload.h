// Stretches in which a lane had no time to spare.
#pragma once

#include <vector>

#include "schedule.h"

namespace analysis {

// By time. A lane without a known idle task has nothing else to be told by: it is one such stretch as a
// whole.
std::vector<Stretch> FindBusyStretches(const Schedule& schedule);

}  // namespace analysis
