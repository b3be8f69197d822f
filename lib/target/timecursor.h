// Finds the entries of one timestamp after the other.
#pragma once

#include <algorithm>

#include "model/entry.h"

// Walks a sorted array; a step costs the logarithm of its length, so a pass over neighbouring timestamps
// costs a constant each, and a distant one little.
class TimeCursor {
 public:
  explicit TimeCursor(const EntryArray& entries) : entries_(entries) {}

  // The first entry at or after a timestamp; End() when there is none.
  const _STLEntry* MoveTo(u64 timestamp) {
    const std::size_t size = entries_.size();
    std::size_t low = position_;
    std::size_t high = position_;
    if (position_ < size && entries_[position_].timestamp < timestamp) {
      for (std::size_t step = 1; high < size && entries_[high].timestamp < timestamp; step *= 2) {
        low = high + 1;
        high = std::min(size, high + step);
      }
    } else {
      for (std::size_t step = 1; low > 0 && entries_[low - 1].timestamp >= timestamp; step *= 2) {
        high = low - 1;
        low -= std::min(low, step);
      }
    }
    const _STLEntry* data = entries_.begin();
    const _STLEntry* found = std::lower_bound(data + low, data + high, timestamp, CompareEntriesByTime());
    position_ = static_cast<std::size_t>(found - data);
    return found;
  }
  const _STLEntry* End() const { return entries_.end(); }

 private:
  const EntryArray& entries_;
  std::size_t position_ = 0;
};
