#include "walker.h"

#include "lanewalker.h"
#include "listeners.h"

namespace analysis {

void Walk(const Lane& lane, const Conventions& conventions, const std::vector<Visitor*>& visitors) {
  Listeners listeners(visitors);
  LaneWalker<Listeners>(lane, conventions, listeners).Walk();
}

}  // namespace analysis
