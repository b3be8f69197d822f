#include "plotrows.h"

#include <algorithm>
#include <cmath>

#include "plotmarks.h"
#include "text.h"
#include "texttable.h"
#include "timeline/colours.h"

namespace cli {
namespace {

using analysis::TaskIndex;
using timeline::Layer;
using timeline::PlacedRow;
using timeline::Rgb;
using timeline::Slice;
using timeline::Spans;

constexpr double fontSize = 11;
constexpr double smallFont = 9;
constexpr double leastBar = 1.5;  // pixels: whatever is there is seen
constexpr double fadeWidth = 16;
constexpr const char* grey = "fill=\"#5A6470\"";

// Draws the rows of one lane.
class LaneDrawing {
 public:
  LaneDrawing(Svg& svg, const PlotLane& lane, const timeline::Window& window)
      : svg_(svg), lane_(lane), window_(window) {
    for (const timeline::TaskTrack& track : lane.tracks.Tasks())
      runs_.push_back(timeline::LayerOf(track.runs, window));
  }

  void DrawLaneRow(const PlacedRow& row) {
    top_ = row.top + timeline::runsTop;
    height_ = timeline::laneRunsHeight;
    LaneLabel(row);
    DrawUnknown();
    DrawStack();
    for (TaskIndex task = 0; task < runs_.size(); ++task) DrawRunSlices(task, NameOf(task));
  }

  void DrawTaskRow(const PlacedRow& row) {
    top_ = row.top + timeline::runsTop;
    height_ = timeline::taskRunsHeight;
    TaskLabel(row);
    const timeline::TaskTrack& track = lane_.tracks.Tasks()[row.task];
    const Layer jobs = timeline::LayerOf(track.jobs, window_);
    DrawJobs(row.task, jobs);
    DrawWaits(row.task, timeline::LayerOf(track.waits, window_));
    DrawBars(runs_[row.task].shares, Colour(row.task));
    DrawRunSlices(row.task, {});
    DrawBrackets(row.task, jobs);
  }

  // Gaps go through all rows of a lane.
  void DrawGaps(double top, double bottom) {
    for (const analysis::Gap& gap : lane_.of.lane.Gaps()) {
      if (gap.to <= window_.From() || gap.from >= window_.To()) continue;
      const double x = Left(Inside(window_.XOf(gap.from)));
      const double width = std::max(Left(Inside(window_.XOf(gap.to))) - x, 1.0);
      svg_.Rect(x, top, width, bottom - top, "fill=\"url(#lost)\"",
                "records lost, " + Between(gap.from, gap.to));
      const double middle = top + timeline::runsTop + timeline::laneRunsHeight / 2.0 - 2;
      if (width >= 90) {
        GapLabel(x + width / 2, 84, middle, "records lost");
      } else if (width >= 41) {
        GapLabel(x + width / 2, 40, middle - 6.5, "records");
        GapLabel(x + width / 2, 40, middle + 6.5, "lost");
      }
    }
  }

 private:
  double Inside(double x) const { return std::clamp(x, 0.0, static_cast<double>(window_.Width())); }
  static double Left(double x) { return x + plotLabelWidth; }

  const std::string& Name(TaskIndex task) const { return lane_.of.lane.Tasks()[task].name; }
  std::string NameOf(TaskIndex task) const { return SafeText(Name(task)); }
  Rgb Colour(TaskIndex task) const {
    return task == lane_.of.conventions.idle ? timeline::idleColour : timeline::ColourOf(Name(task));
  }
  std::string Between(std::uint64_t from, std::uint64_t to) const {
    return fmt::format("{} to {} {}: {} {}", lane_.of.TimeText(from), lane_.of.TimeText(to), lane_.of.Unit(),
                       lane_.of.LengthText(to - from), lane_.of.Unit());
  }

  // ---- Labels ----

  void GapLabel(double x, double width, double middle, const char* text) {
    const double size = width > 50 ? fontSize : smallFont;
    svg_.Rect(x - width / 2, middle - 6.5, width, 13, "fill=\"#FFF\" fill-opacity=\".85\"");
    svg_.Text({x - width / 2, middle - 6.5, width, 13}, middle + size * 0.36, Svg::Align::middle, size,
              "fill=\"#9B2C2C\"", text);
  }

  void LaneLabel(const PlacedRow& row) {
    const auto& numbers = lane_.statistics;
    const double middle = row.top + timeline::runsTop + timeline::laneRunsHeight / 2.0;
    const double width = plotLabelWidth - 14;
    svg_.Text({8, middle - 15, width, 16}, middle - 2, Svg::Align::left, 12, "font-weight=\"bold\"",
              FittedText(lane_.of.source.shownAs, width / 1.1, 12));
    std::string line = numbers.Busy() ? "busy " + Percent(*numbers.Busy()) : "";
    const analysis::Lane shown = lane_.of.lane.Between(window_.From(), window_.To());
    if (!shown.Gaps().empty())
      line += (line.empty() ? "coverage " : ", coverage ") + Percent(shown.Coverage());
    svg_.Text({8, middle, width, 13}, middle + 9.5, Svg::Align::left, smallFont, grey, line);
  }

  void TaskLabel(const PlacedRow& row) {
    const double middle = row.top + timeline::runsTop + timeline::taskRunsHeight / 2.0;
    const std::optional<double> load = lane_.statistics.LoadOf(row.task);
    constexpr double nameLeft = 24;
    constexpr double loadWidth = 50;
    constexpr double priorityWidth = 30;
    constexpr double right = plotLabelWidth - 8;
    const double nameWidth = right - loadWidth - priorityWidth - nameLeft;
    svg_.Rect(10, middle - 4.5, 9, 9, "rx=\"1.5\" fill=\"" + ColourText(Colour(row.task)) + "\"");
    svg_.Text({nameLeft, middle - 9, nameWidth, 18}, middle + 4, Svg::Align::left, fontSize, "",
              FittedText(Name(row.task), nameWidth * 1.08, fontSize));
    const std::string priority = std::to_string(lane_.of.lane.Tasks()[row.task].priority);
    svg_.Text({right - loadWidth - priorityWidth, middle - 8, priorityWidth, 16}, middle + 3.5,
              Svg::Align::right, smallFont, grey, FittedText(priority, priorityWidth, smallFont));
    svg_.Text({right - loadWidth, middle - 8, loadWidth, 16}, middle + 3.5, Svg::Align::right, smallFont,
              grey, load ? Percent(*load) : "-");
  }

  // ---- Runs ----

  double BarHeight(double share) const { return std::max(share * height_, leastBar); }

  // Shares of pixels, from the bottom of the row; equal neighbours are one.
  void DrawBars(const std::vector<timeline::Share>& shares, Rgb colour) {
    SvgPath path;
    for (auto share = shares.begin(); share != shares.end();) {
      std::uint32_t end = share->x;
      const auto first = share;
      while (share != shares.end() && share->x == end && share->part == first->part) ++share, ++end;
      const double bar = BarHeight(first->part);
      path.Rect(Left(first->x), top_ + height_ - bar, end - first->x, bar);
    }
    svg_.Path(path, "shape-rendering=\"crispEdges\" fill=\"" + ColourText(colour) + "\"");
  }

  // What each task took of a pixel stands on what those of higher priority took.
  void DrawStack() {
    const timeline::RowChoice all{.hidesEmpty = false};
    std::vector<double> level(window_.Width());
    for (const TaskIndex task : timeline::RowsOf(lane_.tracks, all, window_.From(), window_.To())) {
      if (runs_[task].IsEmpty() || task == lane_.of.conventions.idle) continue;
      SvgPath path;
      for (const auto& [x, part] : runs_[task].shares) {
        const double bar = part * height_;
        path.Rect(Left(x), top_ + height_ - level[x] - bar, 1, bar);
        level[x] += bar;
      }
      svg_.Path(path, "fill=\"" + ColourText(Colour(task)) + "\"");
    }
  }

  void DrawRunSlices(TaskIndex task, const std::string& name) {
    const Rgb colour = Colour(task);
    const Spans& runs = lane_.tracks.Tasks()[task].runs;
    const std::string fill = "fill=\"" + ColourText(colour) + "\"";
    SvgPath path;
    for (const Slice& slice : runs_[task].slices) {
      const double begin = Inside(slice.begin);
      const double width = Inside(slice.end) - begin;
      if (svg_.HasTitles() && width >= 2) {
        svg_.Rect(Left(begin), top_, width, height_, fill,
                  NameOf(task) + " runs, " + Between(runs.BeginOf(slice.index), runs.EndOf(slice.index)));
      } else {
        path.Rect(Left(begin), top_, width, height_);
      }
    }
    svg_.Path(path, fill);
    for (const Slice& slice : runs_[task].slices) {
      Fade(slice);
      SliceText(slice, colour, name.empty() ? LengthText(runs, slice) : Name(task));
    }
  }

  std::string LengthText(const Spans& runs, const Slice& slice) const {
    if (slice.fadesIn || slice.fadesOut) return {};
    return lane_.of.LengthText(runs.EndOf(slice.index) - runs.BeginOf(slice.index));
  }

  void SliceText(const Slice& slice, Rgb colour, const std::string& text) {
    const double begin = Inside(slice.begin);
    const double width = Inside(slice.end) - begin - 4;
    if (width < fontSize) return;
    const double size = height_ < timeline::laneRunsHeight ? smallFont : fontSize;
    const std::string fitted = FittedText(text, width, size);
    if (!text.empty() && text[0] >= '0' && text[0] <= '9' && fitted != text) return;  // no half numbers
    svg_.Text({Left(begin) + 2, top_, width, height_}, top_ + height_ / 2 + size * 0.36, Svg::Align::middle,
              size, "fill=\"" + ColourText(timeline::InkOn(colour)) + "\"", fitted);
  }

  void Fade(const Slice& slice) {
    const double begin = Inside(slice.begin);
    const double end = Inside(slice.end);
    const double width = std::min(fadeWidth, end - begin);
    if (slice.fadesIn && slice.begin >= 0)
      svg_.Rect(Left(begin), top_, width, height_, "fill=\"url(#fadeIn)\"");
    if (slice.fadesOut && slice.end <= window_.Width())
      svg_.Rect(Left(end - width), top_, width, height_, "fill=\"url(#fadeOut)\"");
  }

  void DrawUnknown() {
    SvgPath path;
    for (const Slice& slice : timeline::LayerOf(lane_.tracks.Unknown(), window_).slices)
      path.Rect(Left(Inside(slice.begin)), top_, Inside(slice.end) - Inside(slice.begin), height_);
    svg_.Path(path, "fill=\"url(#unknown)\"", "nobody is known to run");
  }

  // ---- Jobs ----

  // All of a job is pale; its runs come on top, so what stays pale is the time in which it was kept waiting.
  void DrawJobs(TaskIndex task, const Layer& jobs) {
    const Rgb pale = Mixed(Colour(task), 0xFFFFFF, 0.3);
    // In a pixel, runs are drawn by their own share; jobs stand behind them.
    DrawBars(jobs.shares, pale);
    SvgPath path;
    for (const Slice& slice : jobs.slices)
      path.Rect(Left(Inside(slice.begin)), top_, Inside(slice.end) - Inside(slice.begin), height_);
    svg_.Path(path, "fill=\"" + ColourText(pale) + "\"");
  }

  void DrawWaits(TaskIndex task, const Layer& waits) {
    SvgPath holes, lines;
    for (const Slice& slice : waits.slices) {
      const double begin = Inside(slice.begin);
      const double width = Inside(slice.end) - begin;
      holes.Rect(Left(begin), top_, width, height_);
      lines.Append(fmt::format("M{} {}h{}", Px(Left(begin)), Px(top_ + height_ / 2.0), Px(width)));
    }
    svg_.Path(holes, "fill=\"#FFF\"", "waits");
    const Rgb dark = Mixed(Colour(task), 0x1B1F24, 0.7);
    svg_.Path(lines, "fill=\"none\" stroke-width=\"1.2\" stroke-dasharray=\"2 2\" stroke=\"" +
                         ColourText(dark) + "\"");
  }

  void DrawBrackets(TaskIndex task, const Layer& jobs) {
    const Spans& spans = lane_.tracks.Tasks()[task].jobs;
    const std::string attributes =
        "fill=\"none\" stroke=\"" + ColourText(Mixed(Colour(task), 0x1B1F24, 0.6)) + "\"";
    const double y = top_ + height_ + timeline::bracketHeight - 1.5;
    SvgPath path;
    for (const Slice& slice : jobs.slices) {
      const double begin = std::floor(Inside(slice.begin)) + 0.5;
      const double end = std::max(std::ceil(Inside(slice.end)) - 0.5, begin);
      if (end - begin < 3) continue;
      const bool opens = slice.begin >= 0 && !slice.fadesIn;
      const bool closes = slice.end <= window_.Width() && !slice.fadesOut;
      const std::string bracket = fmt::format("M{} {}{}H{}{}", Px(Left(begin)), Px(opens ? y - 3 : y),
                                              opens ? "v3" : "", Px(Left(end)), closes ? "v-3" : "");
      path.Append(bracket);
      if (!svg_.HasTitles() || end - begin < 4) continue;
      SvgPath one;
      one.Append(bracket);
      svg_.Path(
          one, "fill=\"none\" stroke=\"#000\" stroke-opacity=\"0\" stroke-width=\"5\"",
          "job of " + NameOf(task) + ", " + Between(spans.BeginOf(slice.index), spans.EndOf(slice.index)));
    }
    svg_.Path(path, attributes);
  }

  Svg& svg_;
  const PlotLane& lane_;
  const timeline::Window& window_;
  std::vector<Layer> runs_;  // by TaskIndex
  double top_ = 0;           // of the band of runs
  double height_ = 0;
};

}  // namespace

void DrawRows(Svg& svg, const PlotRows& rows) {
  for (std::size_t begin = 0; begin < rows.rows.size();) {
    std::size_t end = begin + 1;
    while (end < rows.rows.size() && !rows.rows[end].IsLane()) ++end;
    LaneDrawing drawing(svg, *rows.group->lanes[rows.rows[begin].lane], rows.window);
    drawing.DrawGaps(rows.rows[begin].top + 2, rows.rows[end - 1].top + rows.rows[end - 1].Height());
    drawing.DrawLaneRow(rows.rows[begin]);
    for (std::size_t i = begin + 1; i < end; ++i) drawing.DrawTaskRow(rows.rows[i]);
    begin = end;
  }
  for (const PlacedRow& row : rows.rows) DrawMarks(svg, rows, row);
}

}  // namespace cli
