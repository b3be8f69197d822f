// Stretches of one kind, one behind the other: the runs of a task, its jobs, its waits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "analysis/lane.h"

namespace timeline {

using analysis::Ticks;

// Each keeps the sum of all until its end, so that how much of any stretch of time is covered costs two
// searches. Memory grows in small blocks, none of which is ever moved. A block takes 8 bytes a span when it
// is full and no longer than 32 bits of ticks, 16 otherwise.
class Spans {
 public:
  // They come in order and do not overlap; empty ones are taken, too.
  void Add(Ticks begin, Ticks end, bool cutBegin = false, bool cutEnd = false);

  std::size_t Size() const { return size_; }
  Ticks BeginOf(std::size_t index) const {
    const Sum sum = At(index);
    return sum.end - (sum.total - TotalOfFirst(index));
  }
  Ticks EndOf(std::size_t index) const {
    const Block& block = blocks_[index / blockSize];
    const std::size_t place = index % blockSize;
    return block.narrow.empty() ? block.wide[place].end : block.first.end + block.narrow[place].end;
  }
  // Ticks of the first `count` together.
  Ticks TotalOfFirst(std::size_t count) const { return count == 0 ? 0 : At(count - 1).total; }
  bool IsCutAtBegin(std::size_t index) const { return IsCut(index, atBegin); }
  bool IsCutAtEnd(std::size_t index) const { return IsCut(index, atEnd); }

  // The first that ends later than `time`; Size() when there is none. With a `hint` that is not behind it,
  // the search costs the logarithm of how far it lies ahead of it.
  std::size_t FirstEndingAfter(Ticks time, std::size_t hint = 0) const;
  // The first that begins at `time` or later.
  std::size_t FirstBeginningAt(Ticks time) const;
  // How much of the time from `from` to `to` is covered.
  Ticks TicksWithin(Ticks from, Ticks to) const {
    return from < to ? TicksBefore(to) - TicksBefore(from) : 0;
  }

 private:
  static constexpr std::size_t atBegin = 1;
  static constexpr std::size_t atEnd = 2;

  static constexpr std::size_t blockSize = 256;

  struct Sum {
    Ticks end;
    Ticks total;  // of all until this end
  };
  struct Offset {  // from the first of the block
    std::uint32_t end;
    std::uint32_t total;
  };
  struct Block {
    Sum first;
    std::vector<Sum> wide;  // either this
    std::vector<Offset> narrow;
  };

  Sum At(std::size_t index) const {
    const Block& block = blocks_[index / blockSize];
    if (block.narrow.empty()) return block.wide[index % blockSize];
    const Offset& offset = block.narrow[index % blockSize];
    return {block.first.end + offset.end, block.first.total + offset.total};
  }
  static void Narrow(Block& block);
  Ticks TicksBefore(Ticks time) const;
  bool IsCut(std::size_t index, std::size_t where) const;

  std::vector<Block> blocks_;
  std::size_t size_ = 0;
  std::vector<std::size_t> cuts_;  // those that are cut: 4 by the index, and where
};

}  // namespace timeline
