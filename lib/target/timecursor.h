// Finds the entries of one timestamp after the other.
#pragma once

#include <algorithm>

#include "model/entry.h"
#include "model/thresholds.h"

// Walks a sorted array. A move costs the logarithm of its distance, so neighbouring timestamps cost a
// constant each.
class TimeCursor {
 public:
  explicit TimeCursor(const EntryArray& entries) : entries_(entries) {}

  // The first entry at or after a timestamp; End() when there is none.
  const _STLEntry* MoveTo(u64 timestamp) {
    const _STLEntry* const begin = entries_.begin();
    const _STLEntry* const end = entries_.end();
    const _STLEntry* place = begin + position_;
    for (std::size_t step = 0; step < thresholds::neighbours; ++step) {
      if (place != end && place->timestamp < timestamp)
        ++place;
      else if (place != begin && place[-1].timestamp >= timestamp)
        --place;
      else
        return Stay(place);
    }
    return Stay(Gallop(begin, place, end, timestamp));
  }
  const _STLEntry* End() const { return entries_.end(); }
  // The entry next to the cursor in a direction; null at the end.
  const _STLEntry* Next(bool forward) const {
    if (forward) return position_ < entries_.size() ? entries_.begin() + position_ : nullptr;
    return position_ > 0 ? entries_.begin() + position_ - 1 : nullptr;
  }
  void Pass(const _STLEntry* entry, bool forward) {
    position_ = static_cast<std::size_t>(entry - entries_.begin()) + (forward ? 1 : 0);
  }

 private:
  const _STLEntry* Stay(const _STLEntry* place) {
    position_ = static_cast<std::size_t>(place - entries_.begin());
    return place;
  }
  static const _STLEntry* Gallop(const _STLEntry* begin, const _STLEntry* place, const _STLEntry* end,
                                 u64 timestamp) {
    const _STLEntry* low = place;
    const _STLEntry* high = place;
    for (std::ptrdiff_t step = 1; high != end && high->timestamp < timestamp; step *= 2) {
      low = high + 1;
      high += std::min(end - high, step);
    }
    for (std::ptrdiff_t step = 1; low != begin && low[-1].timestamp >= timestamp; step *= 2) {
      high = low - 1;
      low -= std::min(low - begin, step);
    }
    return std::lower_bound(low, high, timestamp, CompareEntriesByTime());
  }

  const EntryArray& entries_;
  std::size_t position_ = 0;
};
