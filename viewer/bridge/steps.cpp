// From one thing to the next, and where a name occurs.
#include <algorithm>
#include <cctype>

#include "cli/failure.h"
#include "exporters/text.h"
#include "recording.h"
#include "timeline/marks.h"

namespace viewer {
namespace {

using analysis::SubjectIndex;
using timeline::Marks;
using timeline::Spans;

struct Found {
  std::size_t lane;
  const char* kind;
  SubjectIndex subject;  // of a run or job its task
  std::size_t index;
  Ticks from;
  Ticks to;
};

// Keeps of what it is offered the nearest behind a time, or before it.
class Nearest {
 public:
  Nearest(Ticks at, bool isForward) : at_(at), isForward_(isForward) {}

  void Offer(const Found& found) {
    if (isForward_ ? found.from <= at_ : found.from >= at_) return;
    if (best_ && (isForward_ ? found.from >= best_->from : found.from <= best_->from)) return;
    best_ = found;
  }
  void OfferSpans(const Spans& spans, std::size_t lane, const char* kind, SubjectIndex task) {
    const std::size_t next = isForward_ ? spans.FirstBeginningAt(at_ == UINT64_MAX ? at_ : at_ + 1)
                                        : spans.FirstBeginningAt(at_) - 1;  // wraps where there is none
    if (next < spans.Size()) Offer({lane, kind, task, next, spans.BeginOf(next), spans.EndOf(next)});
  }
  // Those of one subject alone, or with `noSubject` any. Time: how far the next of the subject is.
  void OfferMarks(const Marks& marks, std::size_t lane, const char* kind, SubjectIndex subject) {
    if (isForward_) {
      for (std::size_t i = timeline::FirstMarkAt(marks, at_); i < marks.size(); ++i)
        if (Matches(marks[i], subject) && marks[i].time > at_) return OfferMark(marks[i], i, lane, kind);
    } else {
      for (std::size_t i = timeline::FirstMarkAt(marks, at_); i-- > 0;)
        if (Matches(marks[i], subject)) return OfferMark(marks[i], i, lane, kind);
    }
  }
  const std::optional<Found>& Best() const { return best_; }

 private:
  static bool Matches(const timeline::MarkPoint& mark, SubjectIndex subject) {
    return subject == analysis::noSubject || mark.subject == subject;
  }
  void OfferMark(const timeline::MarkPoint& mark, std::size_t index, std::size_t lane, const char* kind) {
    Offer({lane, kind, mark.subject, index, mark.time, mark.time});
  }

  Ticks at_;
  bool isForward_;
  std::optional<Found> best_;
};

void OfferTestpoints(Nearest& nearest, const ViewedLane& lane, std::size_t index, SubjectIndex subject) {
  nearest.OfferMarks(lane.Tracks().LoneTestpoints(), index, "testpoint", subject);
  for (const timeline::TaskTrack& track : lane.Tracks().Tasks())
    nearest.OfferMarks(track.testpoints, index, "testpoint", subject);
}

void Offer(Nearest& nearest, const ViewedLane& lane, std::size_t index, const Request& request) {
  const std::string kind = request.Text("kind");
  if (kind == "issue" || kind == "testpoint") {
    const SubjectIndex subject =
        request.Has("subject") ? static_cast<SubjectIndex>(request.Index("subject")) : analysis::noSubject;
    if (kind == "testpoint") return OfferTestpoints(nearest, lane, index, subject);
    return nearest.OfferMarks(lane.Tracks().Issues(), index, "issue", subject);
  }
  const analysis::TaskIndex task = TaskOf(request, lane);
  const timeline::TaskTrack& track = lane.Tracks().Tasks()[task];
  if (kind == "run") return nearest.OfferSpans(track.runs, index, "run", task);
  if (kind == "job") return nearest.OfferSpans(track.jobs, index, "job", task);
  throw cli::Failure(fmt::format("there are no steps by {}", kind));
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

void AddMatch(cli::JsonWriter& json, std::size_t lane, const char* kind, std::size_t subject,
              const std::string& name) {
  json.BeginRow();
  json.Key("lane").Count(lane);
  json.Key("kind").Text(kind);
  json.Key("subject").Count(subject);
  json.Key("name").Text(exporters::SafeText(name));
  json.EndObject();
}

}  // namespace

// Keys: `kind`: "issue" or "testpoint", of one `subject` or of any; or "run" or "job" of `task`; `lane`,
// without it all lanes of `group`; `at`, from where; `forward`. Null when there is no more.
void Step(Recording& recording, const Request& request, Answer& answer) {
  Nearest nearest(request.Time("at"), request.Flag("forward"));
  for (std::size_t lane = 0; lane < recording.Lanes().size(); ++lane) {
    const bool isAsked = request.Has("lane") ? lane == request.Index("lane")
                                             : recording.GroupOf(lane) == request.Index("group");
    if (isAsked) Offer(nearest, *recording.Lanes()[lane], lane, request);
  }
  cli::JsonWriter& json = answer.json;
  if (!nearest.Best()) return json.Null();
  const Found& found = *nearest.Best();
  json.BeginObject();
  json.Key("lane").Count(found.lane);
  json.Key("kind").Text(found.kind);
  json.Key("subject").Count(found.subject);
  json.Key("index").Count(found.index);
  json.Key("from").Ticks(found.from);
  json.Key("to").Ticks(found.to);
  json.EndObject();
}

// Keys: `text`, a part of names in any case; `limit`. Tasks, testpoints and timing issues, lane by lane.
void Search(Recording& recording, const Request& request, Answer& answer) {
  const std::string wanted = Lower(request.Text("text"));
  std::size_t left = request.Index("limit");
  const auto matches = [&](const std::string& name) {
    return left > 0 && Lower(name).find(wanted) != std::string::npos && left-- > 0;
  };
  answer.json.BeginArray();
  for (std::size_t lane = 0; lane < recording.Lanes().size(); ++lane) {
    const analysis::Subjects& names = recording.Lanes()[lane]->Of().lane.Names();
    for (std::size_t task = 0; task < names.Tasks().size(); ++task)
      if (matches(names.Tasks()[task].name))
        AddMatch(answer.json, lane, "task", task, names.Tasks()[task].name);
    for (std::size_t i = 0; i < names.MarkSubjects().size(); ++i) {
      const analysis::MarkSubject& subject = names.MarkSubjects()[i];
      const char* kind = subject.kind == TLCatTimingIssue ? "issue" : "testpoint";
      if (matches(subject.name)) AddMatch(answer.json, lane, kind, names.Tasks().size() + i, subject.name);
    }
  }
  answer.json.EndArray();
}

}  // namespace viewer
