// The entries of a lane as they were recorded, with the gaps between them.
#pragma once

#include "analysis/cursor.h"
#include "exporter.h"

namespace exporters {

// Whether an entry is about a wanted task, or happened while it ran.
inline bool Concerns(const Source& source, const analysis::Cursor& cursor) {
  if (source.tasks.empty()) return true;
  const auto isWanted = [&](analysis::SubjectIndex subject) {
    return source.lane.Names().IsTask(subject) && source.tasks[subject];
  };
  return isWanted(cursor.Slot(0)) || isWanted(cursor.Slot(1));
}

// Calls `onEntry` with a cursor at each entry that concerns a wanted task, and `onGap` with each gap: behind
// the entries at its first tick, before those at its last.
template <class OnEntry, class OnGap>
void ForEachEntry(const Source& source, OnEntry onEntry, OnGap onGap) {
  const std::vector<analysis::Gap>& gaps = source.lane.Gaps();
  std::size_t nextGap = 0;
  analysis::Cursor cursor(source.lane);
  while (cursor.Next()) {
    while (nextGap < gaps.size() && gaps[nextGap].from < cursor.Time()) onGap(gaps[nextGap++]);
    if (Concerns(source, cursor)) onEntry(cursor);
  }
  while (nextGap < gaps.size()) onGap(gaps[nextGap++]);
}

}  // namespace exporters
