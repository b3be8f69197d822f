// A copy of a ring, and where its laps lie.
#include "target/ring.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "model/pages.h"

void Ring::Resize(u32 wordCount) {
  words_.reset(static_cast<u32*>(std::calloc(wordCount, sizeof(u32))));
  if (!words_) throw std::bad_alloc();
  PreferLargePages(words_.get(), wordCount * sizeof(u32));
  wordCount_ = wordCount;
}

Laps::Laps(const Ring& ring) : timeBits(DetectTimeBits(ring.Cell(0), ring.CellCount())) {
  const u32 cellCount = ring.CellCount();
  while (marker < cellCount && !ring.IsMarker(marker)) ++marker;

  // A record like its neighbour has the same time and so makes no entry of its own. In a ring that counts as
  // one of 16-bit ticks, this does not hold for a record that uses the upper bits.
  const auto addsNothing = [&](const u32* cell) {
    return cell[0] == cell[-2] && cell[1] == cell[-1] && (timeBits == 28 || cell[0] >> 20 == 0);
  };
  u32 end = cellCount;
  while (end > marker + 2 && addsNothing(ring.Cell(end - 1))) --end;
  previousRoom = end - std::min(end, marker + 1);
}
