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
    const std::size_t next = IndexIn(spans.Size(), [&](Ticks time) { return spans.FirstBeginningAt(time); });
    if (next < spans.Size()) Offer({lane, kind, task, next, spans.BeginOf(next), spans.EndOf(next)});
  }
  void OfferMarks(const Marks& marks, std::size_t lane, const char* kind) {
    const std::size_t next =
        IndexIn(marks.size(), [&](Ticks time) { return timeline::FirstMarkAt(marks, time); });
    if (next < marks.size())
      Offer({lane, kind, marks[next].subject, next, marks[next].time, marks[next].time});
  }
  void OfferMarks(const std::vector<SubjectMark>& marks, std::size_t lane, const char* kind,
                  SubjectIndex subject) {
    const auto isBefore = [](const SubjectMark& mark, Ticks time) { return mark.time < time; };
    const std::size_t next = IndexIn(marks.size(), [&](Ticks time) {
      return static_cast<std::size_t>(std::lower_bound(marks.begin(), marks.end(), time, isBefore) -
                                      marks.begin());
    });
    if (next < marks.size())
      Offer({lane, kind, subject, marks[next].index, marks[next].time, marks[next].time});
  }
  const std::optional<Found>& Best() const { return best_; }

 private:
  // `size` or more where there is none. `firstAt` finds the first at a time or later.
  template <class FirstAt>
  std::size_t IndexIn(std::size_t size, FirstAt firstAt) const {
    if (!isForward_) return firstAt(at_) - 1;
    return at_ == UINT64_MAX ? size : firstAt(at_ + 1);
  }

  Ticks at_;
  bool isForward_;
  std::optional<Found> best_;
};

void OfferAnyMark(Nearest& nearest, const ViewedLane& lane, std::size_t index, bool isIssue) {
  if (isIssue) return nearest.OfferMarks(lane.Tracks().Issues(), index, "issue");
  nearest.OfferMarks(lane.Tracks().LoneTestpoints(), index, "testpoint");
  for (const timeline::TaskTrack& track : lane.Tracks().Tasks())
    nearest.OfferMarks(track.testpoints, index, "testpoint");
}

void Offer(Nearest& nearest, ViewedLane& lane, std::size_t index, const Request& request) {
  const std::string kind = request.Text("kind");
  if (kind == "issue" || kind == "testpoint") {
    const bool isIssue = kind == "issue";
    if (!request.Has("subject")) return OfferAnyMark(nearest, lane, index, isIssue);
    const auto subject = static_cast<SubjectIndex>(request.Index("subject"));
    return nearest.OfferMarks(lane.MarksOf(subject), index, isIssue ? "issue" : "testpoint", subject);
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
