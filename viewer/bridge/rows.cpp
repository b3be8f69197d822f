// Which rows there are, and the ticks of the axis above them.
#include <algorithm>
#include <cctype>

#include "recording.h"
#include "timeline/axis.h"
#include "timeline/marks.h"

namespace viewer {
namespace {

constexpr int laneGap = 4;  // pixels above all lanes but the first

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// What of the key `filter` keeps: names that hold the text, in any case.
void Filter(std::vector<analysis::TaskIndex>& tasks, const std::string& text, const analysis::Lane& lane) {
  const std::string wanted = Lower(text);
  std::erase_if(tasks, [&](analysis::TaskIndex task) {
    return Lower(lane.Tasks()[task].name).find(wanted) == std::string::npos;
  });
}

std::string Pin(std::size_t lane, analysis::TaskIndex task) { return fmt::format("{}:{}", lane, task); }

// `pins` is sorted.
void MovePinnedUp(std::vector<analysis::TaskIndex>& tasks, std::size_t lane,
                  const std::vector<std::string>& pins) {
  std::stable_partition(tasks.begin(), tasks.end(), [&](analysis::TaskIndex task) {
    return std::binary_search(pins.begin(), pins.end(), Pin(lane, task));
  });
}

void AddRow(cli::JsonWriter& json, const timeline::PlacedRow& row) {
  json.BeginRow();
  json.Key("lane").Count(row.lane);
  json.Key("task");
  row.IsLane() ? json.Null() : json.Count(row.task);
  json.Key("top").Count(static_cast<std::uint64_t>(row.top));
  json.Key("height").Count(static_cast<std::uint64_t>(row.Height()));
  json.EndObject();
}

// How many of the spans and marks are seen from `from` to `to`.
std::uint64_t CountIn(const timeline::Spans& spans, Ticks from, Ticks to) {
  const std::size_t first = spans.FirstEndingAfter(from);
  return std::max(spans.FirstBeginningAt(to), first) - first;
}
std::uint64_t CountIn(const timeline::Marks& marks, Ticks from, Ticks to) {
  const std::size_t behind = to == UINT64_MAX ? marks.size() : timeline::FirstMarkAt(marks, to + 1);
  return behind - std::min(timeline::FirstMarkAt(marks, from), behind);
}

void AddVisible(cli::JsonWriter& json, const ViewedLane& lane, const timeline::PlacedRow& row, Ticks from,
                Ticks to) {
  const timeline::Tracks& tracks = lane.Tracks();
  json.BeginRow();
  json.Key("lane").Count(row.lane);
  json.Key("task");
  row.IsLane() ? json.Null() : json.Count(row.task);
  json.Key("load").Number(row.IsLane() ? lane.BusyShare(from, to) : lane.LoadOf(row.task, from, to));
  if (!row.IsLane()) {
    const timeline::TaskTrack& track = tracks.Tasks()[row.task];
    json.Key("runs").Count(CountIn(track.runs, from, to));
    json.Key("jobs").Count(CountIn(track.jobs, from, to));
    json.Key("events").Count(CountIn(track.events, from, to));
  }
  const timeline::TaskTrack* track = row.IsLane() ? nullptr : &tracks.Tasks()[row.task];
  json.Key("testpoints").Count(CountIn(track ? track->testpoints : tracks.LoneTestpoints(), from, to));
  json.Key("issues").Count(CountIn(track ? track->issues : tracks.Issues(), from, to));
  json.Key("gaps").Count(CountIn(lane.gaps, from, to));
  json.EndObject();
}

}  // namespace

// Keys: `pane`; `group`; `order` as `tasklog plot --sort` has it; `from`, `to`; `hidesEmpty`; `filter`, a
// part of names; `pins`, such as "0:3" for task 3 of lane 0; `folded`, lanes such as "0" that show no tasks.
// They stay until the next call.
void Rows(Recording& recording, const Request& request, Answer& answer) {
  const std::size_t group = request.Index("group");
  recording.GroupAt(group);
  const timeline::RowChoice choice{
      timeline::RowOrderNamed(request.Text("order")).value_or(timeline::RowOrder::priority),
      {},
      request.Flag("hidesEmpty")};
  const std::string filter = request.Has("filter") ? request.Text("filter") : "";
  std::vector<std::string> pins = request.Texts("pins");
  std::sort(pins.begin(), pins.end());
  const std::vector<std::string> folded = request.Texts("folded");
  std::vector<timeline::PlacedRow>& rows = recording.RowsOf(request);
  rows.clear();
  int top = 0;
  for (std::size_t lane = 0; lane < recording.Lanes().size(); ++lane) {
    if (recording.GroupOf(lane) != group) continue;
    const ViewedLane& of = *recording.Lanes()[lane];
    auto tasks = timeline::RowsOf(of.Tracks(), choice, request.Time("from"), request.Time("to"));
    Filter(tasks, filter, of.Of().lane);
    MovePinnedUp(tasks, lane, pins);
    if (std::count(folded.begin(), folded.end(), std::to_string(lane)) > 0) tasks.clear();
    const auto placed = timeline::Place(lane, tasks, top);
    rows.insert(rows.end(), placed.begin(), placed.end());
    top = placed.back().top + placed.back().Height() + laneGap;
  }
  answer.json.BeginArray();
  for (const timeline::PlacedRow& row : rows) AddRow(answer.json, row);
  answer.json.EndArray();
}

// Keys: `pane`, `from`, `to`. The rows with what is seen of each between these times, in words of numbers.
void Visible(Recording& recording, const Request& request, Answer& answer) {
  answer.json.BeginArray();
  for (const timeline::PlacedRow& row : recording.RowsOf(request))
    AddVisible(answer.json, recording.LaneAt(row.lane), row, request.Time("from"), request.Time("to"));
  answer.json.EndArray();
}

// Keys: `group`, those of a window, `distance` in pixels; `inTicks`, not in seconds.
void Axis(Recording& recording, const Request& request, Answer& answer) {
  const cli::PlotGroup& group = recording.GroupAt(request.Index("group"));
  const auto ticks =
      timeline::AxisOf(WindowOf(request), group.first->StartTime(),
                       request.Flag("inTicks") ? 0 : group.lanes.front()->of.lane.TicksPerSecond(),
                       request.Number("distance"));
  answer.json.BeginArray();
  for (const timeline::AxisTick& tick : ticks) {
    answer.json.BeginObject();
    answer.json.Key("x").Number(tick.x);
    answer.json.Key("label").Text(tick.label);
    answer.json.EndObject();
  }
  answer.json.EndArray();
}

}  // namespace viewer
