// Rings of 16-bit ticks that use the upper bits behind their first four cells. Read backward, their times
// rise as well as fall, and what was read already may lie anywhere.
#pragma once

#include "support/ring.h"

inline constexpr std::uint64_t damagedReferenceTime = 0x80000;

inline std::vector<RingRecord> RisesInPreviousLap() {
  return Laps({}, {{2, 0x0001, 1},
                   {2, 0x0020, 3},
                   {2, 0x0020, 1},
                   {2, 0x20010, 1},
                   {2, 0x0005, 1},
                   {2, 0x0020, 2},
                   {2, 0x0020, 1},
                   {2, 0x70010, 2},
                   {2, 0x70010, 1}});
}

inline std::vector<RingRecord> RisesIntoCurrentLap() {
  return Laps({{2, 0x10, 1}, {2, 0x20, 1}, {2, 0x20, 2}, {2, 0x30, 1}, {2, 0x60040, 1}, {2, 0x60040, 2}},
              {{2, 0x70040, 3}, {2, 0x70040, 1}, {2, 0x0020, 3}, {2, 0x10020, 2}, {2, 0x10010, 1}});
}
