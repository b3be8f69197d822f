// Stretches of one kind, one behind the other: the runs of a task, its jobs, its waits.
#pragma once

#include <cstddef>
#include <deque>
#include <vector>

#include "analysis/lane.h"

namespace timeline {

using analysis::Ticks;

// Each takes 16 bytes and keeps the sum of all until its end, so that how much of any stretch of time is
// covered costs two searches. Memory grows in small blocks: none of it is ever moved.
class Spans {
 public:
  // They come in order and do not overlap; empty ones are taken, too.
  void Add(Ticks begin, Ticks end, bool cutBegin = false, bool cutEnd = false);

  std::size_t Size() const { return sums_.size(); }
  Ticks BeginOf(std::size_t index) const {
    return sums_[index].end - (sums_[index].total - TotalOfFirst(index));
  }
  Ticks EndOf(std::size_t index) const { return sums_[index].end; }
  // Ticks of the first `count` together.
  Ticks TotalOfFirst(std::size_t count) const { return count == 0 ? 0 : sums_[count - 1].total; }
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

  struct Sum {
    Ticks end;
    Ticks total;  // of all until this end
  };
  Ticks TicksBefore(Ticks time) const;
  bool IsCut(std::size_t index, std::size_t where) const;

  std::deque<Sum> sums_;
  std::vector<std::size_t> cuts_;  // those that are cut: 4 by the index, and where
};

}  // namespace timeline
