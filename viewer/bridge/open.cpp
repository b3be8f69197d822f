// What the recording is: lanes, tasks, and what marks are about.
#include <algorithm>

#include "cli/bounds.h"
#include "exporters/text.h"
#include "recording.h"
#include "timeline/colours.h"

namespace viewer {
namespace {

void AddTask(cli::JsonWriter& json, const ViewedLane& lane, analysis::TaskIndex index) {
  const analysis::Task& task = lane.Of().lane.Tasks()[index];
  const bool isIdle = index == lane.Of().conventions.idle;
  const timeline::Rgb colour = isIdle ? timeline::idleColour : timeline::ColourOf(task.name);
  json.BeginRow();
  json.Key("name").Text(task.name);
  json.Key("label").Text(exporters::SafeText(task.name));  // what is safe to show
  json.Key("priority").Count(task.priority);
  json.Key("colour").Count(colour);
  json.Key("ink").Count(timeline::InkOn(colour));
  json.Key("isIdle").Bool(isIdle);
  json.EndObject();
}

void AddSubject(cli::JsonWriter& json, const analysis::MarkSubject& subject) {
  json.BeginRow();
  json.Key("name").Text(subject.name);
  json.Key("label").Text(exporters::SafeText(subject.name));
  json.Key("kind").Text(subject.kind == TLCatTimingIssue ? "issue" : "testpoint");
  json.EndObject();
}

void AddLane(cli::JsonWriter& json, const ViewedLane& lane, std::size_t group, std::size_t argument) {
  const cli::AnalysedLane& of = lane.Of();
  json.BeginRow();
  json.Key("name").Text(of.source.name);
  json.Key("title").Text(exporters::SafeText(of.source.name));
  json.Key("label").Text(exporters::SafeText(of.source.shownAs));
  json.Key("group").Count(group);
  json.Key("argument").Count(argument);
  json.Key("startTicks").Ticks(of.lane.StartTime());
  json.Key("stopTicks").Ticks(of.lane.StopTime());
  json.Key("entries").Count(of.loaded->log.EntriesCount());
  json.Key("coverage").Number(of.lane.Coverage());
  json.Key("tasks").BeginArray();
  for (analysis::TaskIndex task = 0; task < of.lane.Tasks().size(); ++task) AddTask(json, lane, task);
  json.EndArray();
  json.Key("subjects").BeginArray();  // behind the tasks: number of tasks + index
  for (const analysis::MarkSubject& subject : of.lane.Names().MarkSubjects()) AddSubject(json, subject);
  json.EndArray();
  json.EndObject();
}

// The part that --from and --to ask for: what is shown at first.
void AddShown(cli::JsonWriter& json, const cli::PlotGroup& group, const Request& request) {
  const auto bound = [&](const char* key) {
    return request.Has(key) ? cli::ParseTimePoint(request.Text(key)) : std::nullopt;
  };
  const cli::Bounds bounds = cli::BoundsIn(*group.first, bound("from"), bound("to"), "view", "view");
  const Ticks from = std::clamp(bounds.from, group.from, group.to);
  json.Key("shownFrom").Ticks(from);
  json.Key("shownTo").Ticks(std::clamp(bounds.to, from, group.to));
}

void AddGroup(cli::JsonWriter& json, const cli::PlotGroup& group, const Request& request) {
  json.BeginRow();
  json.Key("from").Ticks(group.from);
  json.Key("to").Ticks(group.to);
  json.Key("origin").Ticks(group.first->StartTime());
  AddShown(json, group, request);
  json.Key("ticksPerSecond").Count(group.lanes.front()->of.lane.TicksPerSecond());
  json.EndObject();
}

void Describe(const Recording& recording, const Request& request, cli::JsonWriter& json) {
  json.BeginObject();
  json.Key("arguments").BeginArray();
  for (const std::string& argument : recording.Arguments()) json.Text(exporters::SafeText(argument));
  json.EndArray();
  json.Key("lanes").BeginArray();
  for (std::size_t i = 0; i < recording.Lanes().size(); ++i)
    AddLane(json, *recording.Lanes()[i], recording.GroupOf(i), recording.ArgumentOf(i));
  json.EndArray();
  json.Key("groups").BeginArray();
  for (const cli::PlotGroup& group : recording.Groups()) AddGroup(json, group, request);
  json.EndArray();
  json.Key("problems").BeginArray();
  for (const std::string& problem : recording.Problems()) json.Text(problem);
  json.EndArray();
  json.EndObject();
}

}  // namespace

// Keys: `arguments`, `from` and `to`, as the command takes them; with `adds` what is open stays, and the new
// lanes are apart. The files are in the file system of the module.
void Open(Recording& recording, const Request& request, Answer& answer) {
  recording.Open(request.Texts("arguments"), request.Flag("adds"));
  Describe(recording, request, answer.json);
}

// Keys: `separately`: whether lanes of different arguments are apart, though their times could be compared.
void Group(Recording& recording, const Request& request, Answer& answer) {
  recording.Group(request.Flag("separately"));
  Describe(recording, request, answer.json);
}

}  // namespace viewer
