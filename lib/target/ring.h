// A copy of a ring: docs/ring-buffer.md.
#pragma once

#include <memory>

#include "model/block.h"
#include "target/record.h"

// The reference time in two words, then cells of two words. Zeroed, so that words which a controller leaves
// out hold something defined.
class Ring {
 public:
  // Makes room for at least two words; throws bad_alloc.
  void Resize(u32 wordCount);
  u32* Words() { return words_.get(); }
  u32 WordCount() const { return wordCount_; }
  u64 ReferenceTime() const { return u64{words_[0]} << 32 | words_[1]; }
  u32 CellCount() const { return (wordCount_ - 2) / 2; }  // a last cell that is not whole counts for nothing
  const u32* Cell(u32 index) const { return words_.get() + 2 + 2 * std::size_t{index}; }
  bool IsMarker(u32 index) const { return RecordType(*Cell(index)) == markerType; }

 private:
  std::unique_ptr<u32[], Free> words_;
  u32 wordCount_ = 0;  // stays 0 when the ring is too small to hold anything
};

// Where the laps of a ring lie. The current one is before the marker. The previous one is behind it, from the
// end of the ring back to the marker or to another one.
struct Laps {
  explicit Laps(const Ring& ring);

  const int timeBits;  // width of the tick field
  u32 marker = 0;      // cell of the marker; the number of cells when there is none
  // How many entries the previous lap can make: few where a ring holds little, for its unused cells are
  // alike.
  u32 previousRoom = 0;
};
