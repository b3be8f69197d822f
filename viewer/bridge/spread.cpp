// How the values of a quantity are spread, where they come from, and where in time the parts of a job lie.
#include "analysis/pieces.h"
#include "analysis/places.h"
#include "cli/failure.h"
#include "cli/summaryformat.h"
#include "recording.h"

namespace viewer {
namespace {

// What all calls here are about.
struct Subject {
  cli::AnalysedLane lane;
  analysis::TaskIndex task;
  analysis::Quantity quantity;
};

Subject SubjectOf(const Recording& recording, const Request& request) {
  const ViewedLane& lane = recording.LaneAt(request.Index("lane"));
  const analysis::TaskIndex task = TaskOf(request, lane);
  const auto quantity = analysis::QuantityNamed(request.Text("quantity"));
  if (!quantity) throw cli::Failure(fmt::format("there is no quantity {}", request.Text("quantity")));
  if (!request.Has("from") || !request.Has("to")) return {lane.Of(), task, *quantity};
  return {lane.Of().Between(request.Time("from"), request.Time("to")), task, *quantity};
}

constexpr std::size_t mostGiven = 4096;

}  // namespace

// Keys: `lane`, `task`, `quantity` as in the JSON of statistics, `bins`; `from` and `to`, or neither.
void Histogram(Recording& recording, const Request& request, Answer& answer) {
  const Subject of = SubjectOf(recording, request);
  const analysis::Values values = analysis::ValuesOf(of.lane.lane, of.lane.conventions, of.task, of.quantity);
  const std::size_t mostBins = std::max<std::size_t>(request.Index("bins"), 1);
  cli::AddHistogram(answer.json, analysis::MakeHistogram(values, mostBins));
}

// Keys: those of `histogram` without `bins`; `least` and `most`, the values that are meant, both included.
void Places(Recording& recording, const Request& request, Answer& answer) {
  const Subject of = SubjectOf(recording, request);
  const analysis::Places places =
      analysis::PlacesOf(of.lane.lane, of.lane.conventions, of.task, of.quantity,
                         {request.Time("least"), request.Time("most"), 0}, mostGiven);
  cli::JsonWriter& json = answer.json;
  json.BeginObject();
  json.Key("count").Count(places.count);
  json.Key("places").BeginArray();
  for (const analysis::Place& place : places.first) {
    json.BeginRow();
    json.Key("from").Ticks(place.from);
    json.Key("to").Ticks(place.to);
    json.Key("ticks").Ticks(place.value);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
}

// Keys: `lane`, `task`, `from`, `to`: a job. Its parts in the order of time; of very many the longest.
void Pieces(Recording& recording, const Request& request, Answer& answer) {
  ViewedLane& lane = recording.LaneAt(request.Index("lane"));
  const analysis::TaskIndex task = TaskOf(request, lane);
  const analysis::Stretch job{request.Time("from"), request.Time("to")};
  cli::JsonWriter& json = answer.json;
  json.BeginArray();
  for (const analysis::Piece& piece : analysis::PiecesIn(lane.Schedule(), task, job, mostGiven)) {
    json.BeginRow();
    json.Key("kind").Text(analysis::NameOf(piece.kind));
    json.Key("task");
    piece.task == analysis::noTask ? json.Null() : json.Count(piece.task);
    json.Key("from").Ticks(piece.stretch.from);
    json.Key("to").Ticks(piece.stretch.to);
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace viewer
