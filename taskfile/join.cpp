#include "taskfile/join.h"

#include <map>
#include <tuple>
#include <utility>

namespace taskfile {
namespace {

struct Part {
  std::size_t piece;
  Section section;
};

// Records that are taken as they stand.
struct Run {
  std::size_t piece;
  std::size_t begin;
  std::size_t end;
};

class Joiner {
 public:
  Joiner(const std::vector<Piece>& pieces, u64 startTime, u64 stopTime, Sink sink)
      : pieces_(pieces), header_(Header::In(pieces.front().bytes)), writer_(std::move(sink)) {
    header_.startTime = startTime;
    header_.stopTime = stopTime;
  }

  void Write(const Progress& progress) {
    for (std::size_t i = 0; i < pieces_.size(); ++i) CollectSections(i);
    header_.taskCount = static_cast<u32>(tasks_.size());
    writer_.Put(header_);
    const Layout layout(header_.Version());
    for (std::size_t i = 0; i < tasks_.size(); ++i) {
      WriteSection(tasks_[i], layout);
      progress(static_cast<double>(i) / static_cast<double>(tasks_.size()));
    }
    if (layout.hasStamps) WriteSection(events_[0], layout);
    if (layout.hasEvents) WriteSection(events_[1], layout);
    writer_.Flush();
  }

 private:
  // The records of one section of the result.
  struct Selection {
    std::vector<Run> runs = {};
    u32 count = 0;
    Record first = {};
    Record last = {};
    bool hasProlog = false;    // as it stood in the first piece
    bool endsAsItDid = false;  // on a record that is dropped in its own file, too
    bool isFromBegin = false;
  };

  void CollectSections(std::size_t piece) {
    const auto found = AsReaderTakesIt(pieces_[piece].bytes);
    for (const Section& section : found->sections) {
      if (section.kind != Kind::task) {
        events_[section.kind == Kind::stamps ? 0 : 1].push_back({piece, section});
        continue;
      }
      const auto identity = std::tuple(TextOf(section.name), section.priority, section.timeSlice);
      const auto [place, isNew] = places_.try_emplace(identity, tasks_.size());
      if (isNew) tasks_.emplace_back();
      tasks_[place->second].push_back({piece, section});
    }
  }

  void Select(const Part& part, const Layout& layout, Selection& selection) const;
  void Take(std::size_t piece, std::size_t at, const Record& record, Selection& selection) const;
  void WriteSection(const std::vector<Part>& parts, const Layout& layout);
  int NewProlog(const Selection& selection, Kind kind) const;

  const std::vector<Piece>& pieces_;
  Header header_;
  Writer writer_;
  std::map<std::tuple<std::string_view, u32, u32>, std::size_t> places_;
  std::vector<std::vector<Part>> tasks_;
  std::vector<Part> events_[2];
};

void Joiner::Take(std::size_t piece, std::size_t at, const Record& record, Selection& selection) const {
  if (selection.count == 0) selection.isFromBegin = pieces_[piece].isBegin;
  if (selection.count++ == 0) selection.first = record;
  selection.last = record;
  if (!selection.runs.empty() && selection.runs.back().piece == piece && selection.runs.back().end == at)
    selection.runs.back().end = at + record.size;
  else
    selection.runs.push_back({piece, at, at + record.size});
}

// A prolog stays where the log begins with it, an epilog never does: another is written.
void Joiner::Select(const Part& part, const Layout& layout, Selection& selection) const {
  const Piece& piece = pieces_[part.piece];
  const Header own = Header::In(piece.bytes);
  std::size_t at = part.section.recordsAt;
  for (u32 i = 0; i < part.section.count; ++i) {
    const Record record = RecordAt(piece.bytes, at, layout);
    const std::size_t place = std::exchange(at, at + record.size);
    if (record.time < piece.from || record.time > piece.to) continue;
    // One of Ko type 2 is told from a switch by its id, which a task seldom lacks.
    const bool isProlog =
        i == 0 && (IsProlog(record, own) ||
                   (record.time == own.startTime && record.id == 0 && record.KoType() == koSwitchedIn));
    const bool isLast = i > 0 && i + 1 == part.section.count;
    if (isProlog && (!piece.isBegin || own.startTime != header_.startTime)) continue;
    if (isLast && part.section.kind == Kind::task && record.time == own.stopTime) continue;
    const u8 event = part.section.kind == Kind::stamps ? koTestpoint : koTimingIssue;
    if (part.section.kind != Kind::task && !isProlog && record.KoType() != event)
      continue;  // no reader takes it
    if (isProlog) selection.hasProlog = true;
    selection.endsAsItDid = isLast && record.time == own.stopTime;
    Take(part.piece, place, record, selection);
  }
}

// The Ko type of the prolog that is to be written; -1 for none.
int Joiner::NewProlog(const Selection& selection, Kind kind) const {
  if (selection.hasProlog || (kind != Kind::task && selection.count == 0)) return -1;
  if (selection.count == 0) return koSwitchedOut1;
  if (selection.first.time == header_.startTime)
    return IsProlog(selection.first, header_) ? koSwitchedOut1 : -1;  // else a reader took the record for one
  return selection.isFromBegin ? PrologOf(selection.first.KoType()) : koSwitchedOut1;
}

void Joiner::WriteSection(const std::vector<Part>& parts, const Layout& layout) {
  Selection selection;
  for (const Part& part : parts) Select(part, layout, selection);
  const Section& section = parts.front().section;
  const bool isTask = section.kind == Kind::task;
  const int prolog = NewProlog(selection, section.kind);
  // Behind testpoints and timing issues nothing stands, unless a reader took the last for an epilog.
  const bool hasEpilog =
      isTask || (selection.count > 0 && !selection.endsAsItDid && selection.last.time == header_.stopTime);
  const u8 lastKoType = selection.count > 0 ? selection.last.KoType() : koSwitchedOut1;
  writer_.BeginSection(TextOf(section.name), section.priority, section.timeSlice,
                       selection.count + (prolog >= 0 ? 1 : 0) + (hasEpilog ? 1 : 0));
  if (prolog >= 0) writer_.PutRecord(static_cast<u32>(prolog), 0, header_.startTime);
  for (const Run& run : selection.runs)
    writer_.Put(pieces_[run.piece].bytes.substr(run.begin, run.end - run.begin));
  if (hasEpilog) writer_.PutRecord(EpilogOf(lastKoType), 0, header_.stopTime);
}

}  // namespace

void WriteJoined(const std::vector<Piece>& pieces, u64 startTime, u64 stopTime, const Progress& progress,
                 Sink sink) {
  Joiner(pieces, startTime, stopTime, std::move(sink)).Write(progress);
}

}  // namespace taskfile
