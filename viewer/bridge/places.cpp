// What lies at a place of the picture, and what is known of a run or a job.
#include <optional>

#include "analysis/partfinder.h"
#include "cli/failure.h"
#include "exporters/text.h"
#include "recording.h"
#include "timeline/hittest.h"

namespace viewer {
namespace {

using analysis::noTask;
using analysis::TaskIndex;
using timeline::Hit;
using timeline::HitKind;

constexpr const char* kindNames[] = {"nothing", "run",   "wait",      "job",  "unknown",
                                     "gap",     "event", "testpoint", "issue"};

const char* NameOf(HitKind kind) { return kindNames[static_cast<std::size_t>(kind)]; }

std::optional<HitKind> KindNamed(const std::string& name) {
  for (std::size_t kind = 0; kind < std::size(kindNames); ++kind)
    if (name == kindNames[kind]) return static_cast<HitKind>(kind);
  return std::nullopt;
}

void AddTask(cli::JsonWriter& json, const char* key, TaskIndex task) {
  json.Key(key);
  task == noTask ? json.Null() : json.Count(task);
}

std::string NameOf(const ViewedLane& lane, analysis::SubjectIndex subject) {
  return subject == analysis::noSubject ? "nobody known"
                                        : exporters::SafeText(lane.Of().lane.Names().NameOf(subject));
}

std::string Between(const ViewedLane& lane, Ticks from, Ticks to) {
  const cli::AnalysedLane& of = lane.Of();
  return fmt::format("{} to {} {}: {} {}", of.TimeText(from), of.TimeText(to), of.Unit(),
                     of.LengthText(to - from), of.Unit());
}

// The marks of a hit; null for those that are no marks.
const timeline::Marks* MarksOf(const ViewedLane& lane, const timeline::PlacedRow& row, HitKind kind) {
  const timeline::Tracks& tracks = lane.Tracks();
  switch (kind) {
    case HitKind::event: return &tracks.Tasks()[row.task].events;
    case HitKind::testpoint:
      return row.IsLane() ? &tracks.LoneTestpoints() : &tracks.Tasks()[row.task].testpoints;
    case HitKind::issue: return row.IsLane() ? &tracks.Issues() : &tracks.Tasks()[row.task].issues;
    default: return nullptr;
  }
}

// One line for people.
std::string TitleOf(const ViewedLane& lane, const Hit& hit, const timeline::MarkPoint* mark) {
  if (mark) {
    const char* kind = hit.kind == HitKind::event   ? "event for"
                       : hit.kind == HitKind::issue ? "timing issue"
                                                    : "testpoint";
    const std::string more = hit.count > 1 ? fmt::format(", and {} more", hit.count - 1) : "";
    return fmt::format("{} {} at {} {}, {} ran{}", kind, NameOf(lane, mark->subject),
                       lane.Of().TimeText(hit.begin), lane.Of().Unit(), NameOf(lane, mark->running), more);
  }
  const std::string when = Between(lane, hit.begin, hit.end);
  switch (hit.kind) {
    case HitKind::run: return fmt::format("{} runs, {}", NameOf(lane, hit.task), when);
    case HitKind::wait: return fmt::format("{} waits, {}", NameOf(lane, hit.task), when);
    case HitKind::job: return fmt::format("job of {}, {}", NameOf(lane, hit.task), when);
    case HitKind::unknown: return "nobody is known to run, " + when;
    case HitKind::gap: return "records lost, " + when;
    default: return {};
  }
}

void AddHit(cli::JsonWriter& json, const ViewedLane& lane, const timeline::PlacedRow& row, std::size_t index,
            const Hit& hit) {
  const timeline::Marks* marks = MarksOf(lane, row, hit.kind);
  const timeline::MarkPoint* mark = marks ? &(*marks)[hit.index] : nullptr;
  json.BeginObject();
  json.Key("kind").Text(NameOf(hit.kind));
  json.Key("row").Count(index);
  json.Key("lane").Count(row.lane);
  AddTask(json, "task", hit.task);
  AddTask(json, "subject", mark ? mark->subject : analysis::noSubject);
  json.Key("index").Count(hit.index);
  json.Key("count").Count(hit.count);
  json.Key("from").Ticks(hit.begin);
  json.Key("to").Ticks(hit.end);
  json.Key("title").Text(TitleOf(lane, hit, mark));
  json.EndObject();
}

// ---- Details ----

const timeline::Spans& SpansOf(const timeline::TaskTrack& track, HitKind kind) {
  if (kind == HitKind::job) return track.jobs;
  return kind == HitKind::wait ? track.waits : track.runs;
}

// The run that lies at a time, or begins or ends there.
void AddNeighbour(cli::JsonWriter& json, const char* key, const ViewedLane& lane, Ticks time, bool before) {
  json.Key(key);
  for (TaskIndex task = 0; task < lane.Tracks().Tasks().size(); ++task) {
    const timeline::Spans& runs = lane.Tracks().Tasks()[task].runs;
    const std::size_t next =
        before ? runs.FirstEndingAfter(time == 0 ? 0 : time - 1) : runs.FirstEndingAfter(time);
    if (next >= runs.Size()) continue;
    const bool isIt = before ? runs.EndOf(next) == time : runs.BeginOf(next) == time;
    if (!isIt) continue;
    json.BeginObject();
    AddTask(json, "task", task);
    json.Key("index").Count(next);
    json.Key("from").Ticks(runs.BeginOf(next));
    json.Key("to").Ticks(runs.EndOf(next));
    json.EndObject();
    return;
  }
  json.Null();
}

void AddParts(cli::JsonWriter& json, ViewedLane& lane, TaskIndex task, const analysis::Stretch& job) {
  json.Key("parts").BeginArray();
  for (const analysis::Part& part : analysis::PartsIn(lane.Schedule(), task, job)) {
    json.BeginObject();
    json.Key("kind").Text(analysis::NameOf(part.kind));
    AddTask(json, "task", part.task);
    json.Key("ticks").Ticks(part.ticks);
    json.Key("length").Text(lane.Of().LengthText(part.ticks));
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

// Keys: `pane`, those of a window; `x` from its left end, `y` from the top of all rows.
void HitTest(Recording& recording, const Request& request, Answer& answer) {
  const timeline::Window window = WindowOf(request);
  const double y = request.Number("y");
  const std::vector<timeline::PlacedRow>& rows = recording.RowsOf(request);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const timeline::PlacedRow& row = rows[i];
    if (y < row.top || y >= row.top + row.Height()) continue;
    const ViewedLane& lane = recording.LaneAt(row.lane);
    return AddHit(answer.json, lane, row, i,
                  timeline::HitAt(lane.Tracks(), row, window, request.Number("x"), y - row.top));
  }
  answer.json.Null();
}

// Keys: `lane`, `task`, `kind` run, wait or job, `index` in the task's.
void Details(Recording& recording, const Request& request, Answer& answer) {
  ViewedLane& lane = recording.LaneAt(request.Index("lane"));
  const TaskIndex task = TaskOf(request, lane);
  const HitKind kind = KindNamed(request.Text("kind")).value_or(HitKind::run);
  const timeline::Spans& spans = SpansOf(lane.Tracks().Tasks()[task], kind);
  const std::size_t index = request.Index("index");
  if (index >= spans.Size())
    throw cli::Failure(fmt::format("there is no {} {} of this task", NameOf(kind), index));
  const analysis::Stretch stretch{spans.BeginOf(index), spans.EndOf(index)};
  cli::JsonWriter& json = answer.json;
  json.BeginObject();
  json.Key("title").Text(TitleOf(lane, {kind, task, index, 1, stretch.from, stretch.to}, nullptr));
  json.Key("from").Ticks(stretch.from);
  json.Key("to").Ticks(stretch.to);
  json.Key("begin").Text(lane.Of().TimeText(stretch.from));
  json.Key("length").Text(lane.Of().LengthText(stretch.Length()));
  json.Key("unit").Text(lane.Of().Unit());
  json.Key("isCut").Bool(spans.IsCutAtBegin(index) || spans.IsCutAtEnd(index));
  AddNeighbour(json, "before", lane, stretch.from, true);
  AddNeighbour(json, "behind", lane, stretch.to, false);
  if (kind == HitKind::job) AddParts(json, lane, task, stretch);
  json.EndObject();
}

}  // namespace viewer
