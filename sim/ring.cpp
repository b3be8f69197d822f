// The ring encoder; docs/ring-buffer.md is the format.
#include "ring.h"

#include <algorithm>

namespace sim {
namespace {

constexpr uint32_t headerWords = 2;
constexpr uint32_t cellWords = 2;
constexpr uint32_t typeMarker = 15;
constexpr uint32_t upperTickMask = 0xFFF00000;
// A reader tells the tick format from this many cells.
constexpr uint32_t formatCells = 4;

uint32_t TimeTypeWord(uint64_t time, uint32_t type, int tickBits) {
  const uint32_t low = static_cast<uint32_t>(time) & 0xFFFF;
  const uint32_t high = tickBits == 28 ? (static_cast<uint32_t>(time) << 4) & upperTickMask : 0;
  return high | type << 16 | low;
}

}  // namespace

Ring::Ring(uint32_t cellCount, int tickBits)
    : cellCount_(cellCount), tickBits_(tickBits), words_(headerWords + size_t{cellCount} * cellWords) {
  Clear(0);
}

void Ring::Clear(uint64_t time) {
  for (uint32_t cell = 0; cell < cellCount_; ++cell) PutMarker(cell);
  SetReference(time);
  newest_ = time;
  next_ = 0;
}

void Ring::Write(uint64_t time, uint32_t type, uint32_t id) {
  PutCell(next_, TimeTypeWord(time, type, tickBits_), id);
  newest_ = time;
  next_ = next_ + 1 == cellCount_ ? 0 : next_ + 1;
  // What was the current lap is now the previous one, and all of it lies at or before this record.
  if (next_ == 0) SetReference(time);
  PutMarker(next_);
  if (next_ == formatCells && tickBits_ == 28 && FirstCellsLookNarrow()) StartLapOver();
}

void Ring::SetReference(uint64_t time) {
  words_[0] = static_cast<uint32_t>(time >> 32);
  words_[1] = static_cast<uint32_t>(time);
}

void Ring::PutCell(uint32_t cell, uint32_t timeType, uint32_t id) {
  uint32_t* words = &words_[headerWords + size_t{cell} * cellWords];
  words[0] = timeType;
  words[1] = id;
}

// A marker filled with ones also says that ticks are 28 bits wide, so it must not in the 16-bit format.
void Ring::PutMarker(uint32_t cell) {
  PutCell(cell, tickBits_ == 28 ? 0xFFFFFFFF : typeMarker << 16 | 0xFFFF, 0xFFFFFFFF);
}

bool Ring::FirstCellsLookNarrow() const {
  for (uint32_t cell = 0; cell < formatCells; ++cell) {
    if (words_[headerWords + size_t{cell} * cellWords] & upperTickMask) return false;
  }
  return true;
}

// A lap that begins within the first 2^16 ticks of a span would be taken for one of 16-bit ticks once the
// marker has left the first cells. Turning the ring back until the marker stands in cell 0 keeps every record
// and makes all of them the previous lap.
void Ring::StartLapOver() {
  std::rotate(words_.begin() + headerWords, words_.begin() + headerWords + formatCells * cellWords,
              words_.end());
  next_ = 0;
  SetReference(newest_);
}

}  // namespace sim
