// A search tree without pointers over timestamps.
#include "model/timeindex.h"

#include <algorithm>

void TimeIndex::Reserve(std::size_t count) {
  for (std::vector<u64>& level : levels_) {
    count = (count + fanout - 1) / fanout;
    if (level.capacity() < count) level.reserve(count + count / 4);
    if (count <= fanout) return;
  }
}

void TimeIndex::Update(const EntryArray& entries, std::size_t from) {
  std::size_t count = entries.size();
  levelCount_ = 0;
  do {
    std::vector<u64>& level = levels_[levelCount_];
    count = (count + fanout - 1) / fanout;
    from /= fanout;
    level.resize(count);
    for (std::size_t i = from; i < count; ++i)
      level[i] = levelCount_ == 0 ? entries[i * fanout].timestamp : levels_[levelCount_ - 1][i * fanout];
    ++levelCount_;
  } while (count > fanout);
}

// `isBefore` tells whether a timestamp lies before the place that is searched. On every level the last key
// before that place leads to the block below which holds it; counting without a branch lets the processor
// fetch a block at once.
template <class IsBefore>
std::size_t TimeIndex::Search(const EntryArray& entries, IsBefore isBefore) const {
  std::size_t block = 0;
  for (std::size_t i = levelCount_; i-- > 0;) {
    const std::vector<u64>& level = levels_[i];
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

std::size_t TimeIndex::UpperBound(const EntryArray& entries, u64 timestamp) const {
  return Search(entries, [=](u64 other) { return other <= timestamp; });
}
