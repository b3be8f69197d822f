// A record of a ring as two words: docs/ring-buffer.md, Cells. Pure functions; no log, no controller.
#pragma once

#include <tasklog/tasklog.h>

#include "model/types.h"

inline constexpr ETLLogType markerType = 15;

// The type of a record, 0 to 15, from its time/type word.
inline ETLLogType RecordType(u32 timeWord) { return timeWord >> 16 & 0xF; }

// The 28 tick bits of a record from its time/type word; in the 16-bit format the upper 12 are 0.
u32 RecordTick(u32 timeWord);

// Width of the tick field in a ring of `cellCount` cells, 28 or 16.
int DetectTimeBits(const u32* cells, u32 cellCount);

// Widens a tick field to a full timestamp. Records read one after the other lie less than one span apart, so
// one correction is enough; the reading direction says which way.
u64 ExtendTick(u64 previous, u32 tick, int timeBits, bool forward);
