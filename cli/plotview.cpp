#include "plotview.h"

#include <algorithm>

#include "plotmarks.h"
#include "plotrows.h"
#include "svg.h"
#include "timeline/axis.h"
#include "timeline/colours.h"

namespace cli {
namespace {

constexpr int topMargin = 8;
constexpr int axisHeight = 24;
constexpr int groupGap = 14;
constexpr int legendHeight = 34;
constexpr double labelDistance = 90;  // pixels, at least, between the times of the axis
constexpr double fontSize = 10;

// All rows of a group, from `top`.
PlotRows RowsOfGroup(const PlotGroup& group, const timeline::RowChoice& choice, int width, int top) {
  const auto pixels = static_cast<std::uint32_t>(width - plotLabelWidth - plotRightMargin);
  PlotRows rows{&group, timeline::Window(group.from, group.to - group.from, pixels), {}};
  top += axisHeight;
  for (std::size_t lane = 0; lane < group.lanes.size(); ++lane) {
    const auto tasks = timeline::RowsOf(group.lanes[lane]->tracks, choice, group.from, group.to);
    const auto placed = timeline::Place(lane, tasks, top);
    rows.rows.insert(rows.rows.end(), placed.begin(), placed.end());
    top = rows.Bottom() + 4;
  }
  return rows;
}

void DrawAxis(Svg& svg, const PlotRows& rows) {
  const int top = rows.rows.front().top - axisHeight;
  const bool hasSeconds = rows.group->lanes.front()->of.time.HasSeconds();
  const auto ticks = timeline::AxisOf(rows.window, rows.group->first->StartTime(),
                                      rows.group->lanes.front()->of.lane.TicksPerSecond(), labelDistance);
  SvgPath lines;
  for (const timeline::AxisTick& tick : ticks) {
    const double x = tick.x + plotLabelWidth;
    lines.Append("M" + Px(x) + " " + Px(top + 18) + "V" + Px(rows.Bottom()));
    svg.Text({x - 90, top + 2.0, 180, 14}, top + 13, Svg::Align::middle, fontSize, "fill=\"#5A6470\"",
             tick.label);
  }
  svg.Path(lines, "stroke=\"#DFE3E8\"");
  svg.Text({8, top + 2.0, plotLabelWidth - 50.0, 14}, top + 13, Svg::Align::left, fontSize,
           "fill=\"#5A6470\"", hasSeconds ? "time in seconds" : "time in ticks");
}

// A line above each row, a stronger one above each lane.
void DrawLines(Svg& svg, const PlotRows& rows, int width) {
  SvgPath weak, strong;
  for (const timeline::PlacedRow& row : rows.rows)
    (row.IsLane() ? strong : weak).Append("M8 " + Px(row.top + 0.5) + "H" + Px(width - plotRightMargin));
  strong.Append("M8 " + Px(rows.Bottom() + 0.5) + "H" + Px(width - plotRightMargin));
  svg.Path(weak, "stroke=\"#EEF1F4\"");
  svg.Path(strong, "stroke=\"#B4BCC6\"");
}

// What the shapes mean, from left to right.
class Legend {
 public:
  Legend(Svg& svg, int top) : svg_(svg), top_(top) {}

  void Draw() {
    const std::uint32_t colour = 0x56B4E9;
    Box(colour, "runs");
    Box(Mixed(colour, 0xFFFFFF, 0.3), "job is ready, another task runs");
    Dashes("job waits");
    Bracket("job, activation to completion");
    Shape(AddCaret, caretStyle, "task event (line: from the task that ran)");
    Shape(AddTestpoint, testpointStyle, "testpoint");
    Shape(AddFlag, flagStyle, "timing issue");
    svg_.Rect(x_, top_ + 8.0, 16, 12, "fill=\"url(#lost)\"");
    Label("records lost", 16);
  }

 private:
  void Box(std::uint32_t colour, const char* text) {
    svg_.Rect(x_, top_ + 8.0, 16, 12, "fill=\"" + ColourText(colour) + "\"");
    Label(text, 16);
  }
  void Dashes(const char* text) {
    SvgPath path;
    path.Append("M" + Px(x_) + " " + Px(top_ + 14.5) + "h16");
    svg_.Path(path, "stroke=\"#3A6F8E\" stroke-width=\"1.2\" stroke-dasharray=\"2 2\"");
    Label(text, 16);
  }
  void Bracket(const char* text) {
    SvgPath path;
    path.Append("M" + Px(x_ + 0.5) + " " + Px(top_ + 12.5) + "v4h16v-4");
    svg_.Path(path, "fill=\"none\" stroke=\"#3A6F8E\"");
    Label(text, 17);
  }
  void Shape(void (*add)(SvgPath&, double, double), const char* style, const char* text) {
    SvgPath path;
    add(path, x_ + 4, top_ + 18.5);
    svg_.Path(path, style);
    Label(text, 9);
  }
  void Label(const char* text, double shapeWidth) {
    const double width = static_cast<double>(std::string_view(text).size()) * 5.9;
    svg_.Text({x_ + shapeWidth + 5, top_ + 6.0, width, 16}, top_ + 18, Svg::Align::left, fontSize,
              "fill=\"#5A6470\"", text);
    x_ += shapeWidth + 5 + width + 12;
  }

  Svg& svg_;
  int top_;
  double x_ = 10;
};

}  // namespace

PlotPicture DrawPlot(const std::vector<PlotGroup>& groups, const timeline::RowChoice& choice, int width,
                     bool withTitles) {
  Svg svg(withTitles);
  int top = topMargin;
  for (const PlotGroup& group : groups) {
    const PlotRows rows = RowsOfGroup(group, choice, width, top);
    DrawAxis(svg, rows);
    DrawLines(svg, rows, width);
    DrawRows(svg, rows);
    top = rows.Bottom() + groupGap;
  }
  Legend(svg, top - groupGap).Draw();
  const int height = top - groupGap + legendHeight;
  return {svg.Document(width, height), width, height};
}

}  // namespace cli
