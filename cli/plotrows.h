// Draws the rows of a plot.
#pragma once

#include "plotview.h"
#include "svg.h"

namespace cli {

void DrawRows(Svg& svg, const PlotRows& rows);

}  // namespace cli
