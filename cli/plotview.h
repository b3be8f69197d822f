// What a plot shows: lanes on a common time axis, and what was found out of each.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "analysedlane.h"
#include "analysis/statistics.h"
#include "timeline/layer.h"
#include "timeline/rows.h"
#include "timeline/tracks.h"
#include "timeline/window.h"

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

std::vector<PlotGroup> Grouped(const std::vector<std::unique_ptr<PlotLane>>& lanes);

// The rows of a group, as far as they are in the picture.
struct PlotRows {
  const PlotGroup* group;
  timeline::Window window;
  std::vector<timeline::PlacedRow> rows;  // `lane` counts within the group
  int Bottom() const { return rows.back().top + rows.back().Height(); }
};

inline constexpr int plotLabelWidth = 214;
inline constexpr int plotRightMargin = 18;

// The picture of all groups, one below the other.
struct PlotPicture {
  std::string svg;
  int width;
  int height;
};
PlotPicture DrawPlot(const std::vector<PlotGroup>& groups, const timeline::RowChoice& choice, int width,
                     bool withTitles);

}  // namespace cli
