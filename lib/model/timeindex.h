// Finds the place of a timestamp in a log of any size within a few cache lines.
#pragma once

#include <bit>

#include "model/entry.h"

// A search tree without pointers over the timestamps of an EntryArray: level 0 holds the timestamp of every
// 16th (`fanout`) entry, each level above every 16th key of the one below, up to a level of at most 16 keys.
// A search reads one block of 16 neighbours a level; a plain binary search of ten million entries waits for
// memory some ten times. Costs less than 2 % of the entries' memory. Only appends change it, so queries may
// run side by side.
class TimeIndex {
 public:
  // Makes room for `count` entries; throws bad_alloc, with the index as it was.
  void Reserve(std::size_t count);
  // Follows a change of the entries from index `from` on, for which room was made. Cannot fail.
  void Update(const EntryArray& entries, std::size_t from);

  // Index of the first entry at or after a timestamp.
  std::size_t LowerBound(const EntryArray& entries, u64 timestamp) const;
  // Index of the first entry after a timestamp, `first` or behind it.
  std::size_t UpperBound(const EntryArray& entries, u64 timestamp, std::size_t first) const;

 private:
  static constexpr std::size_t fanout = thresholds::fanout;
  // As many as 2^60 entries need, which fit into no memory.
  static constexpr std::size_t maxLevels = 60 / (std::bit_width(fanout) - 1);

  template <class IsBefore>
  std::size_t Search(const EntryArray& entries, IsBefore isBefore) const;

  GrowingArray<u64> levels_[maxLevels];
  std::size_t levelCount_ = 0;
};
