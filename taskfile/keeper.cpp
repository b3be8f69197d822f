#include "taskfile/keeper.h"

#include <utility>

#include "taskfile/order.h"

namespace taskfile {

KeptSection Keeper::Keep(const FoundSection& found) {
  KeptSection kept{.section = found.section};
  DropMisfits(found);
  Summary summary = Summarize(found);
  SetEnds(found, summary, kept);
  if (!summary.inOrder || (!found.isToEnd && summary.kept > 0)) {
    DropOutOfOrder(found, kept, summary);
    summary = Summarize(found);
  }
  TakeSpans(found, kept);
  kept.count = static_cast<u32>(summary.kept);
  kept.lost = summary.all - summary.kept;
  if (!found.isToEnd && found.section.count > summary.kept) kept.lost = found.section.count - summary.kept;
  kept.lastKoType = summary.ends[3].KoType();
  Vote(kept, summary);
  return kept;
}

// As the section will stand in the file.
void Keeper::Vote(const KeptSection& kept, const Summary& summary) const {
  std::vector<Record> ends(summary.ends, summary.ends + std::min<std::size_t>(summary.kept, 2));
  if (kept.needsProlog) ends.insert(ends.begin(), {.koWord = koSwitchedOut1, .time = header_.startTime});
  if (kept.needsEpilog) ends.push_back({.koWord = EpilogOf(kept.lastKoType), .time = header_.stopTime});
  if (ends.size() < 2) return;
  // An epilog that is lost says nothing of the stop time.
  const Kind kind = kept.needsEpilog || summary.kept < 2 ? Kind::stamps : kept.section.kind;
  votes_.Add(kind, ends[0], ends[1], summary.ends[2], summary.ends[3]);
}

void Keeper::DropMisfits(const FoundSection& found) {
  keeps_.clear();
  ForEachRecord(found, [&](const Record& record, std::size_t at, std::size_t) {
    keeps_.push_back(MayStandIn(found.section.kind, record, IsFirst(found, at), IsLast(found, at, record)) &&
                     IsBelievable(record, header_));
  });
}

Keeper::Summary Keeper::Summarize(const FoundSection& found) const {
  Summary summary;
  ForEachRecord(found, [&](const Record& record, std::size_t at, std::size_t number) {
    ++summary.all;
    if (!keeps_[number]) return;
    if (summary.kept > 0 && record.time < summary.ends[3].time) summary.inOrder = false;
    if (summary.kept < 2) summary.ends[summary.kept] = record;
    summary.ends[2] = std::exchange(summary.ends[3], record);
    ++summary.kept;
    summary.hasFirst |= IsFirst(found, at);
    summary.hasLast |= IsLast(found, at, record);
  });
  return summary;
}

// What stands at the ends of a section reads as a prolog or an epilog when it has the time of one. Where the
// true end is lost, another is put there.
void Keeper::SetEnds(const FoundSection& found, const Summary& summary, KeptSection& kept) const {
  if (summary.kept == 0) return;
  const Record& first = summary.ends[0];
  const Record& last = summary.ends[3];
  const bool isAtStop = last.time == header_.stopTime;
  const bool isLoneEpilog = summary.kept == 1 && summary.hasLast && isAtStop;
  kept.needsProlog = !summary.hasFirst && (IsProlog(first, header_) || isLoneEpilog);
  const bool isEpilog = isAtStop && last.id == 0 && last.KoType() >= 1 && last.KoType() <= koSwitchedOut1;
  kept.needsEpilog = !summary.hasLast && !isEpilog && (found.section.kind == Kind::task || isAtStop);
}

// Of all records that stand between those at the ends; a prolog or an epilog that is put there stands before.
template <class Visit>
void Keeper::ForEachBetween(const FoundSection& found, const KeptSection& kept, std::size_t count,
                            Visit visit) const {
  const std::size_t begin = kept.needsProlog ? 0 : 1;
  const std::size_t end = kept.needsEpilog ? count : count - 1;
  std::size_t index = 0;
  ForEachRecord(found, [&](const Record& record, std::size_t, std::size_t number) {
    if (!keeps_[number]) return;
    if (index >= begin && index < end) visit(record, number);
    ++index;
  });
}

void Keeper::DropOutOfOrder(const FoundSection& found, const KeptSection& kept, const Summary& summary) {
  OrderRule rule(header_, !found.isToEnd);
  ForEachBetween(found, kept, summary.kept, [&](const Record& record, std::size_t) { rule.Add(record); });
  if (!rule.Applies()) return;
  std::vector<std::size_t> dropped;
  ForEachBetween(found, kept, summary.kept, [&](const Record& record, std::size_t number) {
    if (rule.IsDamaged(record)) dropped.push_back(number);
  });
  for (const std::size_t number : dropped) keeps_[number] = false;
}

// What is kept, and the times between which something is not.
void Keeper::TakeSpans(const FoundSection& found, KeptSection& kept) {
  u64 time = header_.startTime;
  bool isLost = false;
  const auto lose = [&](u64 until) {
    if (isLost) lostTimes_.push_back({std::min(time, until), std::max(time, until)});
    isLost = false;
  };
  std::size_t end = found.section.recordsAt;
  ForEachRecord(found, [&](const Record& record, std::size_t at, std::size_t number) {
    if (!keeps_[number] || at != end) isLost = true;
    end = at + record.size;
    if (!keeps_[number]) return;
    lose(record.time);
    time = record.time;
    if (!kept.spans.empty() && kept.spans.back().end == at)
      kept.spans.back().end = end;
    else
      kept.spans.push_back({at, end});
  });
  isLost |= !found.isToEnd;
  lose(header_.stopTime);
}

}  // namespace taskfile
