// The walk: one pass over the entries of a lane that gives them their meaning.
#pragma once

#include <vector>

#include "meanings.h"
#include "visitor.h"

namespace analysis {

// Tells the visitors, which are borrowed, what happens on the lane. Time: a constant an entry, whatever the
// number of tasks and of jobs under way. Memory: a constant a task, and the entries of the tick at hand.
void Walk(const Lane& lane, const Conventions& conventions, const std::vector<Visitor*>& visitors);

}  // namespace analysis
