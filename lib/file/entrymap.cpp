// Pairs the two records of one entry.
#include "file/entrymap.h"

#include <algorithm>

_STLEntry* _STLTaskLog::EntryMap::FindOrCreateEntryWithEmptyTask(u64 timestamp, u32 slot) {
  const auto [begin, end] = entries_.equal_range(timestamp);
  const auto found = std::find_if(begin, end, [=](const auto& item) { return !item.second.slots[slot]; });
  return found != end ? &found->second : Insert(_STLEntry(TLLogSwitch4, timestamp));
}
