// Selects entries by time, category and type, and completes them with the task that was running.
#include <algorithm>

#include "model/model.h"

namespace {

constexpr u64 allTypes = TL_LOGS_ALL;

}  // namespace

// A bound that does not cut into the period is not applied: entries that lie outside the period, possible
// after an append from a file, are part of a query that reaches its end.
_STLTaskLog::EntryRange _STLTaskLog::SelectTimeRange(u64 from, u64 to) const {
  EntryRange range{entries.begin(), entries.end()};
  if (startTime < from)
    range.begin = std::lower_bound(entries.begin(), entries.end(), from, CompareEntriesByTime());
  if (stopTime > to) range.end = std::upper_bound(range.begin, entries.end(), to, CompareEntriesByTime());
  return range;
}

_STLEntryIterator* _STLTaskLog::GetEntries(const _STLCategory* category, u64 types, u64 from, u64 to) const {
  if (types == 0) types = allTypes;
  const EntryRange range = SelectTimeRange(from, to);
  return new _STLEntryIterator(range.begin, range.end, {category, types});
}

u64 _STLTaskLog::GetEntriesCount(const _STLCategory* category, u64 types, u64 from, u64 to) const {
  if (types == 0) types = allTypes;
  const EntryRange range = SelectTimeRange(from, to);
  if (!category && (types & allTypes) == allTypes) return static_cast<u64>(range.end - range.begin);
  return static_cast<u64>(std::count_if(range.begin, range.end, _STLEntryIterator::Matches{category, types}));
}

void _STLTaskLog::FillInOldTasks() {
  constexpr u64 switches = TL_LOGS_SWITCHES;
  constexpr u64 events = TL_LOGS_TASK_EVENTS | TL_LOGS_TESTPOINTS | TL_LOGS_TIMING_ISSUES;
  _STLCategory* running = nullptr;
  for (_STLEntry& entry : entries) {
    // A file may state the task that a switch ended, so only an empty slot is filled there.
    if (MaskHas(events, entry.type) || !entry.slots[1]) entry.slots[1] = running;
    if (MaskHas(switches, entry.type)) running = entry.slots[0];
  }
}
