// An entry of a log, and counts of entries.
#pragma once

#include <tasklog/tasklog.h>

#include "model/growingarray.h"
#include "model/types.h"

// The bit of a value in a mask of kinds or types.
inline bool MaskHas(u64 mask, u32 value) { return (mask >> (value % 64)) & 1; }

// One moment on the controller. A plain value; its categories belong to the log.
struct _STLEntry {
  _STLEntry() = default;
  _STLEntry(ETLLogType entryType, u64 entryTimestamp) : type(entryType), timestamp(entryTimestamp) {}

  ETLLogType type = TLLogSwitch0;
  u64 timestamp = 0;                            // ticks
  _STLCategory* slots[2] = {nullptr, nullptr};  // 0: what it is about; 1: the task that was running
};
static_assert(sizeof(_STLEntry) <= 32);  // docs/performance.md counts on it

// The order of a log's entries, for searches by timestamp.
struct CompareEntriesByTime {
  bool operator()(const _STLEntry& a, const _STLEntry& b) const { return a.timestamp < b.timestamp; }
  bool operator()(const _STLEntry& entry, u64 timestamp) const { return entry.timestamp < timestamp; }
  bool operator()(u64 timestamp, const _STLEntry& entry) const { return timestamp < entry.timestamp; }
};

using EntryArray = GrowingArray<_STLEntry>;

inline constexpr u32 entryTypeCount = 16;  // as many as the type field of a record can state

// How many entries there are of each type.
struct EntryCounts {
  u64 Sum(u64 types) const {
    u64 sum = 0;
    for (u32 type = 0; type < entryTypeCount; ++type) sum += MaskHas(types, type) ? byType[type] : 0;
    return sum;
  }
  u64 byType[entryTypeCount] = {};
};
