// A record of a logger buffer as two words: docs/ring-buffer.md, Record slot. Pure functions; no log, no
// target.
#pragma once

#include <tasklog/tasklog.h>

#include "model/types.h"

inline constexpr ETLLogType markerType = 15;

// The type of a record, 0 to 15, from its time/type word.
inline ETLLogType RecordType(u32 timeWord) { return timeWord >> 16 & 0xF; }

// The 28 tick bits of a record from its time/type word; in the 16-bit format the upper 12 are 0.
u32 RecordTick(u32 timeWord);

// Width of the tick field in a buffer of `slotCount` slots, 28 or 16.
int DetectTimeBits(const u32* slots, u32 slotCount);

// Widens a tick field to a full timestamp. Records read one after the other lie less than one span
// apart, so one correction is enough; the reading direction says which way.
u64 ExtendTick(u64 previous, u32 tick, int timeBits, bool forward);
