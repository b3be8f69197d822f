// What a timeline shows: lanes on a common time axis, and what was found out of each.
#pragma once

#include <vector>

#include "analysedlane.h"
#include "analysis/statistics.h"
#include "timeline/tracks.h"

namespace cli {

// A lane, loaded as a whole.
struct PlotLane {
  explicit PlotLane(AnalysedLane analysed);

  AnalysedLane of;
  timeline::Tracks tracks;
  analysis::Statistics statistics;  // of the time that is shown, once PlotGroup::Select() was called
};

// Lanes whose times can be compared: one tick rate, and periods that overlap.
struct PlotGroup {
  std::vector<PlotLane*> lanes;
  analysis::Ticks from;  // both included
  analysis::Ticks to;
  const tasklog::Log* first;  // starts first: from there seconds count

  // Only this time is shown, as far as the lanes reach, and the numbers are of it.
  void Select(analysis::Ticks begin, analysis::Ticks end);
};

std::vector<PlotGroup> Grouped(const std::vector<PlotLane*>& lanes);

}  // namespace cli
