// A record of a ring: its words to type, tick and time.
#include "target/record.h"

#include <algorithm>

u32 RecordTick(u32 timeWord) { return (timeWord & 0xFFFF) | (timeWord >> 4 & 0x0FFF0000); }

// A controller with narrow ticks leaves the upper bits zero in every record, marker included.
int DetectTimeBits(const u32* cells, u32 cellCount) {
  const u32 examined = std::min(cellCount, 4u);
  for (u32 cell = 0; cell < examined; ++cell)
    if (cells[2 * cell] >> 20) return 28;
  return 16;
}

u64 ExtendTick(u64 previous, u32 tick, int timeBits, bool forward) {
  const u64 span = u64{1} << timeBits;
  const u64 candidate = (previous & ~(span - 1)) | tick;
  if (forward && candidate < previous) return candidate + span;
  if (!forward && candidate > previous) return candidate - span;
  return candidate;
}
