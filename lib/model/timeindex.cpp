// A search tree without pointers over timestamps.
#include "model/timeindex.h"

#include <algorithm>

void TimeIndex::Reserve(std::size_t count) {
  for (GrowingArray<u64>& level : levels_) {
    count = (count + fanout - 1) / fanout;
    level.Spare(count - level.size());
    if (count <= fanout) return;
  }
}

void TimeIndex::Update(const EntryArray& entries, std::size_t from) {
  std::size_t count = entries.size();
  levelCount_ = 0;
  do {
    GrowingArray<u64>& level = levels_[levelCount_];
    count = (count + fanout - 1) / fanout;
    from = std::min(from / fanout, level.size());  // a level that is new is made from its start
    level.Extend(count - level.size());
    for (std::size_t i = from; i < count; ++i)
      level[i] = levelCount_ == 0 ? entries[i * fanout].timestamp : levels_[levelCount_ - 1][i * fanout];
    ++levelCount_;
  } while (count > fanout);
}

// `isBefore` tells whether a timestamp lies before the place in question. On every level the last key before
// that place leads to its block on the level below. Counting without a branch lets the processor fetch a
// block at once.
template <class IsBefore>
std::size_t TimeIndex::Search(const EntryArray& entries, IsBefore isBefore) const {
  std::size_t block = 0;
  for (std::size_t i = levelCount_; i-- > 0;) {
    const GrowingArray<u64>& level = levels_[i];
    const std::size_t begin = block * fanout;
    const std::size_t end = std::min(begin + fanout, level.size());
    std::size_t before = 0;
    for (std::size_t key = begin; key < end; ++key) before += isBefore(level[key]);
    if (before == 0) return 0;  // only on the top level: elsewhere the first key led here
    block = begin + before - 1;
  }
  const std::size_t begin = block * fanout;
  const std::size_t end = std::min(begin + fanout, entries.size());
  std::size_t place = begin;
  for (std::size_t i = begin; i < end; ++i) place += isBefore(entries[i].timestamp);
  return place;
}

std::size_t TimeIndex::LowerBound(const EntryArray& entries, u64 timestamp) const {
  return Search(entries, [=](u64 other) { return other < timestamp; });
}

std::size_t TimeIndex::UpperBound(const EntryArray& entries, u64 timestamp, std::size_t first) const {
  // The ends of a short period lie side by side.
  const std::size_t near = std::min(first + fanout, entries.size());
  for (std::size_t i = first; i < near; ++i)
    if (entries[i].timestamp > timestamp) return i;
  return std::max(first, Search(entries, [=](u64 other) { return other <= timestamp; }));
}
