// What the rows of a window show, for drawing. docs/viewer.md, Pixels, has the order of the numbers.
#include <algorithm>
#include <cmath>

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

constexpr std::uint32_t BytesOf(Rgb colour, std::uint32_t opacity) {
  return (colour >> 16 & 0xFF) | (colour & 0xFF00) | (colour & 0xFF) << 16 | opacity << 24;
}

// The bars of a row: `height` lines, each as wide as the window.
class Bars {
 public:
  Bars(Answer& answer, std::uint32_t width, int height)
      : answer_(answer), begin_(answer.pixels.size()), width_(width), height_(height) {}

  // From `level`, counted from below.
  void Add(std::size_t x, long level, long height, std::uint32_t bytes) {
    if (answer_.pixels.size() == begin_) answer_.pixels.resize(begin_ + std::size_t{width_} * height_);
    const long end = std::min<long>(level + height, height_);
    for (long y = level; y < end; ++y)
      answer_.pixels[begin_ + static_cast<std::size_t>(height_ - 1 - y) * width_ + x] = bytes;
  }
  // Where they begin in the pixels; -1: there are none.
  std::int32_t Place() const {
    return answer_.pixels.size() == begin_ ? -1 : static_cast<std::int32_t>(begin_);
  }
  int Height() const { return height_; }

 private:
  Answer& answer_;
  std::size_t begin_;
  std::uint32_t width_;
  int height_;
};

// Writes the rows of one lane, whose runs are looked up once.
class LanePixels {
 public:
  // `labels` counts the lengths in the JSON.
  LanePixels(const ViewedLane& lane, const timeline::Window& window, Answer& answer, std::int32_t& labels)
      : lane_(lane),
        window_(window),
        answer_(answer),
        labels_(labels),
        gaps_(timeline::LayerOf(lane.gaps, window)) {}

  void Add(const PlacedRow& row, std::size_t index) {
    const std::size_t header = answer_.ints.size();
    answer_.ints.insert(answer_.ints.end(), {static_cast<std::int32_t>(index), -1, 0, 0, 0});
    Bars bars(answer_, window_.Width(), timeline::RunsHeightOf(row));
    slices_ = marks_ = 0;
    answer_.floats.push_back(static_cast<float>(row.IsLane() ? BusyShare() : LoadOf(row.task)));
    row.IsLane() ? AddLaneRow(bars) : AddTaskRow(row.task, bars);
    AddGaps();
    AddMarks(row);
    answer_.ints[header + 1] = bars.Place();
    answer_.ints[header + 2] = bars.Height();
    answer_.ints[header + 3] = slices_;
    answer_.ints[header + 4] = marks_;
  }

 private:
  const timeline::TaskTrack& Track(TaskIndex task) const { return lane_.Tracks().Tasks()[task]; }
  Rgb ColourOf(TaskIndex task) const { return timeline::ColourOf(lane_.Of().lane.Tasks()[task].name); }

  // ---- Numbers beside the rows ----

  double KnownTicks() const {
    const Ticks from = std::max(window_.From(), lane_.Of().lane.StartTime());
    const Ticks to = std::min(window_.To(), lane_.Of().lane.StopTime());
    if (to <= from) return 0;
    const Ticks unknown = lane_.gaps.TicksWithin(from, to) + lane_.Tracks().Unknown().TicksWithin(from, to);
    return static_cast<double>(to - from - unknown);
  }
  double LoadOf(TaskIndex task) const {
    const double known = KnownTicks();
    if (known <= 0) return std::nan("");
    return static_cast<double>(Track(task).runs.TicksWithin(window_.From(), window_.To())) / known;
  }
  double BusyShare() const {
    const TaskIndex idle = lane_.Of().conventions.idle;
    return idle == analysis::noTask ? std::nan("") : 1 - LoadOf(idle);
  }

  // ---- Bars of what is narrower than a pixel ----

  static long Pixels(double share, int height) { return std::lround(share * height); }

  // What each task took of a pixel stands on what those of higher priority took.
  void AddLaneRow(Bars& bars) {
    std::vector<float> levels;
    for (const TaskIndex task : lane_.byPriority) {
      const Layer layer = timeline::LayerOf(Track(task).runs, window_);
      if (layer.isEmpty) continue;
      AddSlices(layer, runSlice, task);
      if (task == lane_.Of().conventions.idle) continue;
      levels.resize(window_.Width());
      const std::uint32_t bytes = BytesOf(ColourOf(task), opaque);
      for (std::size_t x = 0; x < layer.shares.size(); ++x) {
        if (layer.shares[x] <= 0) continue;
        const long from = Pixels(levels[x], bars.Height());
        levels[x] += layer.shares[x];
        bars.Add(x, from, Pixels(levels[x], bars.Height()) - from, bytes);
      }
    }
    AddSlices(timeline::LayerOf(lane_.Tracks().Unknown(), window_), unknownSlice, analysis::noTask);
  }

  void AddTaskRow(TaskIndex task, Bars& bars) {
    const bool isIdle = task == lane_.Of().conventions.idle;
    AddShares(timeline::LayerOf(Track(task).jobs, window_), bars, BytesOf(ColourOf(task), pale), jobSlice,
              task);
    AddSlices(timeline::LayerOf(Track(task).waits, window_), waitSlice, task);
    AddShares(timeline::LayerOf(Track(task).runs, window_), bars,
              isIdle ? BytesOf(idleBars, idleOpacity) : BytesOf(ColourOf(task), opaque), runSlice, task);
  }

  void AddShares(const Layer& layer, Bars& bars, std::uint32_t bytes, SliceKind kind, TaskIndex task) {
    for (std::size_t x = 0; x < layer.shares.size(); ++x)
      if (layer.shares[x] > 0)
        bars.Add(x, 0, std::max(Pixels(layer.shares[x], bars.Height()), leastBar), bytes);
    AddSlices(layer, kind, task);
  }

  // ---- Slices ----

  void AddSlices(const Layer& layer, SliceKind kind, TaskIndex task) {
    for (const timeline::Slice& slice : layer.slices) {
      const std::int32_t flags = (slice.fadesIn ? fadesIn : 0) | (slice.fadesOut ? fadesOut : 0);
      AddSlice(kind, task, slice.index, flags, slice.begin, slice.end, LabelOf(kind, task, slice));
    }
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
    AddSlices(gaps_, gapSlice, analysis::noTask);
    for (std::size_t x = 0; x < gaps_.shares.size(); ++x) {
      if (gaps_.shares[x] <= 0) continue;
      const std::size_t begin = x;
      while (x + 1 < gaps_.shares.size() && gaps_.shares[x + 1] > 0) ++x;
      AddSlice(gapSlice, analysis::noTask, 0, 0, static_cast<double>(begin), static_cast<double>(x + 1), -1);
    }
  }

  // ---- Marks ----

  void AddMarks(const PlacedRow& row) {
    if (row.IsLane()) {
      Add(lane_.Tracks().LoneTestpoints(), timeline::testpointWidth, testpointMark);
      Add(lane_.Tracks().Issues(), timeline::markWidth, issueMark);
      return;
    }
    Add(Track(row.task).testpoints, timeline::testpointWidth, testpointMark);
    Add(Track(row.task).events, timeline::markWidth, eventMark);
    Add(Track(row.task).issues, timeline::markWidth, issueMark);
  }

  void Add(const timeline::Marks& marks, std::uint32_t cellWidth, MarkKind kind) {
    for (const timeline::MarkCell& cell : timeline::CellsOf(marks, window_, cellWidth)) {
      const timeline::MarkPoint& first = marks[cell.first];
      answer_.ints.insert(
          answer_.ints.end(),
          {kind, static_cast<std::int32_t>(first.subject), static_cast<std::int32_t>(first.running),
           static_cast<std::int32_t>(cell.first), static_cast<std::int32_t>(cell.count)});
      answer_.floats.push_back(static_cast<float>(cell.x));
      ++marks_;
    }
  }

  const ViewedLane& lane_;
  const timeline::Window& window_;
  Answer& answer_;
  std::int32_t& labels_;
  Layer gaps_;
  std::int32_t slices_ = 0;
  std::int32_t marks_ = 0;
};

}  // namespace

// Keys: those of a window; `top` and `height`, the part of the rows that is seen, in pixels.
void Pixels(Recording& recording, const Request& request, Answer& answer) {
  const timeline::Window window = WindowOf(request);
  const double top = request.Number("top");
  const double bottom = top + request.Number("height");
  answer.json.BeginArray();
  std::int32_t labels = 0;
  for (std::size_t i = 0; i < recording.rows.size();) {
    const std::size_t lane = recording.rows[i].lane;
    LanePixels pixels(recording.LaneAt(lane), window, answer, labels);
    for (; i < recording.rows.size() && recording.rows[i].lane == lane; ++i) {
      const PlacedRow& row = recording.rows[i];
      if (row.top < bottom && row.top + row.Height() > top) pixels.Add(row, i);
    }
  }
  answer.json.EndArray();
}

}  // namespace viewer
