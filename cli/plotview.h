// The picture that `tasklog plot` writes.
#pragma once

#include <string>
#include <vector>

#include "plotlanes.h"
#include "timeline/layer.h"
#include "timeline/rows.h"
#include "timeline/window.h"

namespace cli {

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
