// A copy of a logger buffer, and where its laps lie.
#include "target/ring.h"

#include <cstdlib>
#include <new>

#include "model/pages.h"

void Ring::Resize(u32 wordCount) {
  words_.reset(static_cast<u32*>(std::calloc(wordCount, sizeof(u32))));
  if (!words_) throw std::bad_alloc();
  PreferLargePages(words_.get(), wordCount * sizeof(u32));
  wordCount_ = wordCount;
}

// A record like the one before it has its time and so makes no entry of its own. Where a buffer counts as one
// of narrow ticks, a record of wide ones may have another time even so.
bool Laps::Adds(const Ring& ring, u32 slot) const {
  const u32* words = ring.Slot(slot);
  return words[0] != words[-2] || words[1] != words[-1] || (timeBits == 16 && words[0] >> 20);
}

Laps::Laps(const Ring& ring) : timeBits(DetectTimeBits(ring.Slot(0), ring.SlotCount())) {
  const u32 slotCount = ring.SlotCount();
  for (; marker < slotCount && !ring.IsMarker(marker); ++marker)
    currentRoom += marker == 0 || Adds(ring, marker);
  previousBegin = slotCount;
  while (previousBegin > marker + 1 && !ring.IsMarker(previousBegin - 1))
    previousRoom += Adds(ring, --previousBegin);
}
