// Draws the marks above a row of a plot: events, testpoints and timing issues.
#pragma once

#include "plotview.h"
#include "svg.h"

namespace cli {

void DrawMarks(Svg& svg, const PlotRows& rows, const timeline::PlacedRow& row);

// The shapes, for the legend. `x` is where the mark is, `bottom` the bottom of the band of marks.
void AddCaret(SvgPath& path, double x, double bottom);
void AddTestpoint(SvgPath& path, double x, double bottom);
void AddFlag(SvgPath& path, double x, double bottom);
inline constexpr const char* caretStyle = "fill=\"#3A434E\"";
inline constexpr const char* testpointStyle = "fill=\"none\" stroke=\"#6A7480\" stroke-width=\"1.2\"";
inline constexpr const char* flagStyle =
    "fill=\"#D01C1F\" stroke=\"#D01C1F\" stroke-width=\"1\" stroke-linejoin=\"round\"";

}  // namespace cli
