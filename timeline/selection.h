// The numbers of a stretch of time that was selected in a picture.
#pragma once

#include <string>

#include "analysis/statistics.h"

namespace timeline {

// What `tasklog stats --from --to` shows: the lane is cut at both ends and walked anew. `idleName` as
// FindIdleTask() takes it. Time: the entries from `from` to `to`.
analysis::Statistics Select(const analysis::Lane& lane, const analysis::Meanings& meanings,
                            const std::string& idleName, analysis::Ticks from, analysis::Ticks to);

}  // namespace timeline
