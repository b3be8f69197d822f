#include "selection.h"

namespace timeline {

analysis::Statistics Select(const analysis::Lane& lane, const analysis::Meanings& meanings,
                            const std::string& idleName, analysis::Ticks from, analysis::Ticks to) {
  const analysis::Lane part = lane.Between(from, to);
  return analysis::Statistics::Of(part, {meanings, analysis::FindIdleTask(part, idleName)});
}

}  // namespace timeline
