#include "plotmarks.h"

#include <algorithm>

#include "text.h"
#include "timeline/colours.h"
#include "timeline/hittest.h"

namespace cli {
namespace {

using timeline::MarkCell;
using timeline::MarkPoint;
using timeline::Marks;
using timeline::PlacedRow;

constexpr double countFont = 7.5;

class MarksOfRow {
 public:
  MarksOfRow(Svg& svg, const PlotRows& rows, const PlacedRow& row)
      : svg_(svg),
        rows_(rows),
        row_(row),
        lane_(*rows.group->lanes[row.lane]),
        bottom_(row.top + timeline::marksHeight - 1.0) {}

  void Draw() {
    const timeline::Tracks& tracks = lane_.tracks;
    if (row_.IsLane()) {
      Draw(tracks.LoneTestpoints(), timeline::testpointWidth, AddTestpoint, testpointStyle, "testpoint");
      Draw(tracks.Issues(), timeline::markWidth, AddFlag, flagStyle, "timing issue");
      return;
    }
    const timeline::TaskTrack& track = tracks.Tasks()[row_.task];
    DrawArrows(track.events);
    Draw(track.testpoints, timeline::testpointWidth, AddTestpoint, testpointStyle, "testpoint");
    Draw(track.events, timeline::markWidth, AddCaret, caretStyle, "event for");
    Draw(track.issues, timeline::markWidth, AddFlag, flagStyle, "timing issue");
  }

 private:
  static double Left(double x) { return x + plotLabelWidth; }
  const std::string& Name(analysis::SubjectIndex subject) const {
    return lane_.of.lane.Names().NameOf(subject);
  }

  void Draw(const Marks& marks, std::uint32_t width, void (*add)(SvgPath&, double, double), const char* style,
            const char* kind) {
    const std::vector<MarkCell> cells = timeline::CellsOf(marks, rows_.window, width);
    SvgPath all;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (!svg_.HasTitles()) {
        add(all, Left(cells[i].x), bottom_);
      } else {
        SvgPath one;
        add(one, Left(cells[i].x), bottom_);
        svg_.Path(one, style, Title(marks, cells[i], kind));
      }
      const double next = i + 1 < cells.size() ? cells[i + 1].x : rows_.window.Width() + 20.0;
      if (width == timeline::markWidth) Count(cells[i], next);
    }
    svg_.Path(all, style);
  }

  void Count(const MarkCell& cell, double next) {
    if (cell.count < 2) return;
    const std::string text = std::to_string(cell.count);
    const double width = static_cast<double>(text.size()) * 5.5;
    if (cell.x + 6 + width > next - 3) return;
    svg_.Text({Left(cell.x) + 6, bottom_ - 9, width, 10}, bottom_ - 1.5, Svg::Align::left, countFont,
              "fill=\"#3A434E\"", text);
  }

  std::string Title(const Marks& marks, const MarkCell& cell, const char* kind) const {
    const MarkPoint& mark = marks[cell.first];
    const std::string running =
        mark.running == analysis::noTask ? "" : ", while " + SafeText(Name(mark.running)) + " ran";
    const std::string name = mark.subject == analysis::noSubject ? "" : " " + SafeText(Name(mark.subject));
    const std::string more = cell.count > 1 ? fmt::format(", and {} more", cell.count - 1) : "";
    return fmt::format("{}{} at {} {}{}{}", kind, name, lane_.of.TimeText(mark.time), lane_.of.Unit(),
                       running, more);
  }

  // From the row of the task that ran to the caret, where single events have room for it.
  void DrawArrows(const Marks& events) {
    constexpr std::size_t mostArrows = 80;
    const std::vector<MarkCell> cells = timeline::CellsOf(events, rows_.window, timeline::markWidth);
    if (cells.size() > mostArrows) return;
    for (const MarkCell& cell : cells) {
      const analysis::TaskIndex running = events[cell.first].running;
      const auto from = std::find_if(rows_.rows.begin(), rows_.rows.end(), [&](const PlacedRow& row) {
        return row.lane == row_.lane && row.task == running && !row.IsLane();
      });
      if (cell.count > 1 || from == rows_.rows.end() || running == row_.task) continue;
      if (running == lane_.of.conventions.idle) continue;  // a timer, then
      const double begin =
          from->top + timeline::runsTop + (from->top < row_.top ? timeline::taskRunsHeight : 0);
      SvgPath arrow;
      arrow.Append(fmt::format("M{} {}V{}", Px(Left(cell.x)), Px(begin), Px(bottom_ - 4)));
      const std::uint32_t colour = Mixed(timeline::ColourOf(Name(running)), 0x1B1F24, 0.8);
      svg_.Path(arrow, "fill=\"none\" stroke-opacity=\".7\" stroke=\"" + ColourText(colour) + "\"");
    }
  }

  Svg& svg_;
  const PlotRows& rows_;
  const PlacedRow& row_;
  const PlotLane& lane_;
  double bottom_;
};

}  // namespace

void AddCaret(SvgPath& path, double x, double bottom) {
  path.Append(fmt::format("M{} {}l-3.5 -5.5h7z", Px(x), Px(bottom)));
}

void AddTestpoint(SvgPath& path, double x, double bottom) {
  path.Append(fmt::format("M{} {}v-6", Px(x), Px(bottom)));
}

void AddFlag(SvgPath& path, double x, double bottom) {
  path.Append(fmt::format("M{} {}v-8.5l6 2.5l-6 2.5z", Px(x), Px(bottom)));
}

void DrawMarks(Svg& svg, const PlotRows& rows, const PlacedRow& row) { MarksOfRow(svg, rows, row).Draw(); }

}  // namespace cli
