// What the rows of a window show, for drawing. docs/viewer.md, Pixels, has the order of the numbers.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "image.h"
#include "recording.h"
#include "timeline/colours.h"
#include "timeline/hittest.h"
#include "timeline/layer.h"
#include "timeline/marks.h"

namespace viewer {
namespace {

using analysis::TaskIndex;
using timeline::Layer;
using timeline::PlacedRow;
using timeline::Rgb;

enum SliceKind : std::int32_t { runSlice, jobSlice, waitSlice, unknownSlice, gapSlice };
enum MarkKind : std::int32_t { eventMark, testpointMark, issueMark };
enum SliceFlag : std::int32_t { fadesIn = 1, fadesOut = 2 };

constexpr std::uint32_t opaque = 255;
constexpr std::uint32_t pale = 84;  // of a job that is kept waiting
constexpr Rgb idleBars = 0x87919E;  // seen on light and dark paper
constexpr std::uint32_t idleOpacity = 60;
constexpr long leastBar = 2;  // pixels: whatever is there is seen
constexpr double leastLabelled = 34;
constexpr double tallest = 16384;  // of the image
constexpr double leastDrawn = 4;   // of a slice that the page draws; narrower ones are part of the image
constexpr std::uint32_t denseDistance =
    50;  // pixels between the marks of a row: closer ones are part of it too
constexpr Rgb denseMarks = 0x87919E;
constexpr Rgb denseIssues = 0xE03C3C;
constexpr std::uint32_t denseOpacity = 190;

// Writes the rows of one lane, whose runs are looked up once.
class LanePixels {
 public:
  // `labels` counts the lengths in the JSON.
  LanePixels(const ViewedLane& lane, const timeline::Window& window, Image& image, Answer& answer,
             std::int32_t& labels)
      : lane_(lane),
        window_(window),
        image_(image),
        answer_(answer),
        labels_(labels),
        gaps_(timeline::LayerOf(lane.gaps, window)),
        runs_(lane.Tracks().Tasks().size()) {}

  void Add(const PlacedRow& row, std::size_t index) {
    const std::size_t header = answer_.ints.size();
    answer_.ints.insert(answer_.ints.end(), {static_cast<std::int32_t>(index), 0, 0});
    Bars bars(image_, row);
    slices_ = marks_ = 0;
    answer_.floats.push_back(static_cast<float>(LoadOf(row)));
    row.IsLane() ? AddLaneRow(bars) : AddTaskRow(row.task, bars);
    AddGaps();
    AddMarks(row);
    answer_.ints[header + 1] = slices_;
    answer_.ints[header + 2] = marks_;
  }

 private:
  const timeline::TaskTrack& Track(TaskIndex task) const { return lane_.Tracks().Tasks()[task]; }
  double LoadOf(const PlacedRow& row) const {
    return row.IsLane() ? lane_.BusyShare(window_.From(), window_.To())
                        : lane_.LoadOf(row.task, window_.From(), window_.To());
  }
  Rgb ColourOf(TaskIndex task) const { return timeline::ColourOf(lane_.Of().lane.Tasks()[task].name); }

  // ---- Bars of what is narrower than a pixel ----

  // As std::lround(), which is a call: shares are not below 0.
  static long Pixels(double share, int height) {
    const double pixels = share * height;
    const long whole = static_cast<long>(pixels);
    return pixels - static_cast<double>(whole) < 0.5 ? whole : whole + 1;
  }

  // The row of the lane and that of the task show the same.
  const Layer& RunsOf(TaskIndex task) {
    std::optional<Layer>& layer = runs_[task];
    if (!layer) layer = timeline::LayerOf(Track(task).runs, window_);
    return *layer;
  }

  // What each task took of a pixel stands on what those of higher priority took.
  void AddLaneRow(Bars& bars) {
    struct Level {
      float share = 0;
      long pixels = 0;
    };
    std::vector<Level> levels(window_.Width());
    for (const TaskIndex task : lane_.byPriority) {
      const Layer& layer = RunsOf(task);
      if (layer.IsEmpty()) continue;
      const std::uint32_t bytes = BytesOfRuns(task);
      AddSlices(layer, runSlice, task, bars, bytes);
      if (task == lane_.Of().conventions.idle) continue;
      for (const auto& [x, part] : layer.shares) {
        const long from = levels[x].pixels;
        levels[x] = {levels[x].share + part, Pixels(levels[x].share + part, bars.Height())};
        bars.Add(x, from, levels[x].pixels - from, bytes);
      }
    }
    AddSlices(timeline::LayerOf(lane_.Tracks().Unknown(), window_), unknownSlice, analysis::noTask, bars,
              BytesOf(idleBars, idleOpacity));
  }

  std::uint32_t BytesOfRuns(TaskIndex task) const {
    return task == lane_.Of().conventions.idle ? BytesOf(idleBars, idleOpacity)
                                               : BytesOf(ColourOf(task), opaque);
  }

  void AddTaskRow(TaskIndex task, Bars& bars) {
    AddShares(timeline::LayerOf(Track(task).jobs, window_), bars, BytesOf(ColourOf(task), pale), jobSlice,
              task);
    for (const timeline::Slice& slice : timeline::LayerOf(Track(task).waits, window_).slices)
      AddSlice(waitSlice, task, slice);
    AddShares(RunsOf(task), bars, BytesOfRuns(task), runSlice, task);
  }

  void AddShares(const Layer& layer, Bars& bars, std::uint32_t bytes, SliceKind kind, TaskIndex task) {
    for (const auto& [x, part] : layer.shares)
      bars.Add(x, 0, std::max(Pixels(part, bars.Height()), leastBar), bytes);
    AddSlices(layer, kind, task, bars, bytes);
  }

  // ---- Slices ----

  void AddSlices(const Layer& layer, SliceKind kind, TaskIndex task, Bars& bars, std::uint32_t bytes) {
    for (const timeline::Slice& slice : layer.slices) {
      const bool isPlain = !slice.fadesIn && !slice.fadesOut;
      if (isPlain && slice.end - slice.begin < leastDrawn)
        bars.AddWhole(slice.begin, slice.end, bytes);
      else
        AddSlice(kind, task, slice);
    }
  }

  void AddSlice(SliceKind kind, TaskIndex task, const timeline::Slice& slice) {
    const std::int32_t flags = (slice.fadesIn ? fadesIn : 0) | (slice.fadesOut ? fadesOut : 0);
    AddSlice(kind, task, slice.index, flags, slice.begin, slice.end, LabelOf(kind, task, slice));
  }

  void AddSlice(SliceKind kind, TaskIndex task, std::size_t index, std::int32_t flags, double begin,
                double end, std::int32_t label) {
    const double most = window_.Width() + 1.0;
    answer_.ints.insert(answer_.ints.end(), {kind, static_cast<std::int32_t>(task),
                                             static_cast<std::int32_t>(index), flags, label});
    answer_.floats.push_back(static_cast<float>(std::clamp(begin, -1.0, most)));
    answer_.floats.push_back(static_cast<float>(std::clamp(end, -1.0, most)));
    ++slices_;
  }

  // The length of a run that has room for it: its number in the JSON; -1: none.
  std::int32_t LabelOf(SliceKind kind, TaskIndex task, const timeline::Slice& slice) {
    if (kind != runSlice || slice.fadesIn || slice.fadesOut || slice.end - slice.begin < leastLabelled)
      return -1;
    const timeline::Spans& runs = Track(task).runs;
    answer_.json.Ticks(runs.EndOf(slice.index) - runs.BeginOf(slice.index));
    return labels_++;
  }

  // Neighbouring pixels that hold any are one.
  void AddGaps() {
    for (const timeline::Slice& slice : gaps_.slices) AddSlice(gapSlice, analysis::noTask, slice);
    for (auto share = gaps_.shares.begin(); share != gaps_.shares.end();) {
      const std::uint32_t begin = share->x;
      std::uint32_t end = begin;
      for (; share != gaps_.shares.end() && share->x == end; ++share) ++end;
      AddSlice(gapSlice, analysis::noTask, 0, 0, begin, end, -1);
    }
  }

  // ---- Marks ----

  void AddMarks(const PlacedRow& row) {
    if (row.IsLane()) {
      Add(row, lane_.Tracks().LoneTestpoints(), timeline::testpointWidth, testpointMark);
      Add(row, lane_.Tracks().Issues(), timeline::markWidth, issueMark);
      return;
    }
    Add(row, Track(row.task).testpoints, timeline::testpointWidth, testpointMark);
    Add(row, Track(row.task).events, timeline::markWidth, eventMark);
    Add(row, Track(row.task).issues, timeline::markWidth, issueMark);
  }

  void Add(const PlacedRow& row, const timeline::Marks& marks, std::uint32_t cellWidth, MarkKind kind) {
    const auto cells = timeline::CellsOf(marks, window_, cellWidth);
    const bool isDense = cells.size() > window_.Width() / denseDistance;
    for (const timeline::MarkCell& cell : cells) isDense ? Paint(row, cell, kind) : Add(marks, cell, kind);
  }

  // A line, a flag, or a small triangle that points to the row.
  void Paint(const PlacedRow& row, const timeline::MarkCell& cell, MarkKind kind) {
    const long x = std::lround(cell.x);
    const std::uint32_t bytes =
        kind == issueMark ? BytesOf(denseIssues, opaque) : BytesOf(denseMarks, denseOpacity);
    if (kind != eventMark) image_.Fill(x, x + 1, row.top + 2, timeline::marksHeight - 2, bytes);
    if (kind == issueMark)
      for (long y = 0; y < 5; ++y) image_.Fill(x, x + 7 - 3 * std::abs(y - 2), row.top + 1 + y, 1, bytes);
    if (kind == eventMark)
      for (long y = 0; y < 3; ++y) image_.Fill(x - 2 + y, x + 3 - y, row.top + 4 + 2 * y, 2, bytes);
  }

  void Add(const timeline::Marks& marks, const timeline::MarkCell& cell, MarkKind kind) {
    const timeline::MarkPoint& first = marks[cell.first];
    answer_.ints.insert(
        answer_.ints.end(),
        {kind, static_cast<std::int32_t>(first.subject), static_cast<std::int32_t>(first.running),
         static_cast<std::int32_t>(cell.first), static_cast<std::int32_t>(cell.count)});
    answer_.floats.push_back(static_cast<float>(cell.x));
    ++marks_;
  }

  const ViewedLane& lane_;
  const timeline::Window& window_;
  Image& image_;
  Answer& answer_;
  std::int32_t& labels_;
  Layer gaps_;
  std::vector<std::optional<Layer>> runs_;  // by task
  std::int32_t slices_ = 0;
  std::int32_t marks_ = 0;
};

}  // namespace

// Keys: `pane`, those of a window; `top` and `height`, the part of the rows that is seen, in pixels.
void Pixels(Recording& recording, const Request& request, Answer& answer) {
  const timeline::Window window = WindowOf(request);
  const double top = request.Number("top");
  const double bottom = top + request.Number("height");
  Image image(answer, window.Width(), top, std::clamp(request.Number("height"), 1.0, tallest));
  answer.json.BeginArray();
  std::int32_t labels = 0;
  const std::vector<PlacedRow>& rows = recording.RowsOf(request);
  for (std::size_t i = 0; i < rows.size();) {
    const std::size_t lane = rows[i].lane;
    LanePixels pixels(recording.LaneAt(lane), window, image, answer, labels);
    for (; i < rows.size() && rows[i].lane == lane; ++i) {
      const PlacedRow& row = rows[i];
      if (row.top < bottom && row.top + row.Height() > top) pixels.Add(row, i);
    }
  }
  answer.json.EndArray();
}

}  // namespace viewer
