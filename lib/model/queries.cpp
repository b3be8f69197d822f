// Selects entries by time, category and type.
#include <algorithm>

#include "model/model.h"

namespace {

constexpr u64 allTypes = TL_LOGS_ALL;

}  // namespace

// A bound that does not cut into the period does not apply: a file may have entries outside its period, and a
// query that reaches the end of the period yields them.
_STLTaskLog::EntryRange _STLTaskLog::SelectTimeRange(u64 from, u64 to) const {
  std::size_t begin = 0;
  std::size_t end = entries.size();
  if (startTime < from) begin = timeIndex_.LowerBound(entries, from);
  if (stopTime > to) end = timeIndex_.UpperBound(entries, to, begin);
  return {entries.begin() + begin, entries.begin() + end};
}

_STLEntryIterator* _STLTaskLog::GetEntries(const _STLCategory* category, u64 types, u64 from, u64 to) const {
  if (types == 0) types = allTypes;
  const EntryRange range = SelectTimeRange(from, to);
  return new _STLEntryIterator(range.begin, range.end, {category, types});
}

// The appends keep counts of the whole log, so only a count over a part looks at entries.
u64 _STLTaskLog::GetEntriesCount(const _STLCategory* category, u64 types, u64 from, u64 to) const {
  if (types == 0) types = allTypes;
  const EntryRange range = SelectTimeRange(from, to);
  const auto count = static_cast<u64>(range.end - range.begin);
  if (!category && (types & allTypes) == allTypes) return count;
  if (count == entries.size()) {
    if (!category) return entryCounts_.Sum(types);
    const bool own = category->index < categories.size() && categories[category->index] == category;
    return own ? category->entryCounts.Sum(types) : 0;
  }
  return static_cast<u64>(std::count_if(range.begin, range.end, _STLEntryIterator::Matches{category, types}));
}
