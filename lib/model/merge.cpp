// Takes new entries into a log and fills in the task that was running. The cost depends on what an append
// adds and on what lies behind the first entry added, not on what lies before.
#include <algorithm>

#include "model/model.h"

namespace {

constexpr u64 switches = TL_LOGS_SWITCHES;
constexpr u64 events = TL_LOGS_TASK_EVENTS | TL_LOGS_TESTPOINTS | TL_LOGS_TIMING_ISSUES;

// A stretch of entries by index, without `end`.
struct Stretch {
  std::size_t begin;
  std::size_t end;
};

// Merges a series of new entries into the `held` entries at `data`, behind which there is room for it. Works
// from the back, and so touches nothing before the first place of the series. Returns the stretch that holds
// it.
template <class GoesBehind>
Stretch MergeSeries(_STLEntry* data, std::size_t held, NewSeries series, GoesBehind goesBehind) {
  std::size_t count = series.size();
  std::size_t to = held + count;
  Stretch stretch{to, 0};
  while (count > 0) {
    if (held > 0 && !goesBehind(series[count - 1].timestamp, data[held - 1].timestamp)) {
      data[--to] = data[--held];
    } else {
      stretch.end = std::max(stretch.end, to);
      data[--to] = series[--count];
    }
  }
  stretch.begin = to;
  return stretch;
}

// Whether a new entry goes behind a held one, by their times.
constexpr auto goesBehindEqual = [](u64 fresh, u64 held) { return fresh >= held; };
constexpr auto goesBeforeEqual = [](u64 fresh, u64 held) { return fresh > held; };

// Whether new entries at the start of the spare room, those of `before` first, are in their place there.
bool AreInPlace(const EntryArray& entries, NewSeries before, NewSeries behind) {
  if (!before.empty() && !behind.empty() &&
      !goesBehindEqual(behind.front().timestamp, before.back().timestamp))
    return false;
  if (entries.empty()) return true;
  const u64 last = entries.back().timestamp;
  return before.empty() ? goesBehindEqual(behind.front().timestamp, last)
                        : goesBeforeEqual(before.front().timestamp, last);
}

// Merges both series into the entries, behind which there is room for them. Returns the stretch that holds
// both.
Stretch MergeBoth(EntryArray& entries, NewSeries before, NewSeries behind) {
  const std::size_t held = entries.size();
  const Stretch last = MergeSeries(entries.begin(), held, behind, goesBehindEqual);
  const Stretch first = MergeSeries(entries.begin(), held + behind.size(), before, goesBeforeEqual);
  return {std::min(first.begin, last.begin), std::max(first.end, last.end + before.size())};
}

// Takes two series, one behind the other, out of the way of a merge.
void MoveAside(EntryArray& aside, NewSeries& before, NewSeries& behind) {
  const std::size_t count = before.size() + behind.size();
  _STLEntry* const copy = aside.Spare(count);
  std::copy_n((before.empty() ? behind : before).data(), count, copy);
  before = {copy, before.size()};
  behind = {copy + before.size(), behind.size()};
}

}  // namespace

// All memory is obtained before anything changes.
void _STLTaskLog::TakeNewEntries(NewSeries before, NewSeries behind) {
  const std::size_t held = entries.size();
  const std::size_t count = before.size() + behind.size();
  if (count == 0) return;
  const bool inSpareRoom = (before.empty() ? behind : before).data() == entries.end();
  const bool inPlace = inSpareRoom && AreInPlace(entries, before, behind);
  timeIndex_.Reserve(held + count);
  EntryArray copy;
  if (!inSpareRoom)
    entries.Spare(count);
  else if (!inPlace)
    MoveAside(copy, before, behind);

  for (const _STLEntry& entry : before) CountEntry(entry);
  for (const _STLEntry& entry : behind) CountEntry(entry);
  const Stretch changed = inPlace ? Stretch{held, held + count} : MergeBoth(entries, before, behind);
  entries.Extend(count);
  FillInOldTasks(changed.begin, changed.end);
  timeIndex_.Update(entries, changed.begin);
}

void _STLTaskLog::CountEntry(const _STLEntry& entry) {
  const auto [first, second] = entry.slots;
  ++entryCounts_.byType[entry.type];
  if (first) ++first->entryCounts.byType[entry.type];
  if (second && second != first) ++second->entryCounts.byType[entry.type];
}

void _STLTaskLog::SetRunning(_STLEntry& entry, _STLCategory* running) {
  _STLCategory*& slot = entry.slots[1];
  if (slot == running) return;
  if (slot && slot != entry.slots[0]) --slot->entryCounts.byType[entry.type];
  if (running && running != entry.slots[0]) ++running->entryCounts.byType[entry.type];
  slot = running;
}

// The task running when the entry at `index` happened, for entries before it that are filled in.
_STLCategory* _STLTaskLog::RunningBefore(std::size_t index) const {
  if (index == filledIn_) return runningAtEnd_;
  while (index-- > 0) {
    const _STLEntry& entry = entries[index];
    if (MaskHas(switches, entry.type)) return entry.slots[0];
    if (MaskHas(events, entry.type)) return entry.slots[1];
  }
  return nullptr;
}

// Behind the new entries the first switch leads back to what was filled in before.
void _STLTaskLog::FillInOldTasks(std::size_t from, std::size_t to) {
  _STLCategory* running = RunningBefore(from);
  filledIn_ = entries.size();
  for (std::size_t i = from; i < entries.size(); ++i) {
    _STLEntry& entry = entries[i];
    // A file may state the task that a switch ended, so only an empty slot is filled there.
    if (MaskHas(events, entry.type) || !entry.slots[1]) SetRunning(entry, running);
    if (!MaskHas(switches, entry.type)) continue;
    running = entry.slots[0];
    if (i >= to) return;
  }
  runningAtEnd_ = running;
}
