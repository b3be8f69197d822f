#include "spans.h"

#include <algorithm>

namespace timeline {

void Spans::Add(Ticks begin, Ticks end, bool cutBegin, bool cutEnd) {
  if (cutBegin || cutEnd) cuts_.push_back(4 * Size() + (cutBegin ? atBegin : 0) + (cutEnd ? atEnd : 0));
  const Sum sum{end, TotalOfFirst(Size()) + (end - begin)};
  if (size_++ % blockSize == 0) {
    blocks_.push_back({sum, {}, {}});
    // What a task with few of them takes grows with their number.
    if (blocks_.size() > 1) blocks_.back().wide.reserve(blockSize);
  }
  blocks_.back().wide.push_back(sum);
  if (blocks_.back().wide.size() == blockSize) Narrow(blocks_.back());
}

// Where it is not too long.
void Spans::Narrow(Block& block) {
  const Sum& last = block.wide.back();
  if (std::max(last.end - block.first.end, last.total - block.first.total) > UINT32_MAX) return;
  block.narrow.reserve(block.wide.size());
  for (const Sum& sum : block.wide)
    block.narrow.push_back({static_cast<std::uint32_t>(sum.end - block.first.end),
                            static_cast<std::uint32_t>(sum.total - block.first.total)});
  block.wide = {};
}

std::size_t Spans::FirstEndingAfter(Ticks time, std::size_t hint) const {
  std::size_t low = hint;
  std::size_t step = 1;
  while (low + step <= Size() && EndOf(low + step - 1) <= time) {
    low += step;
    step *= 2;
  }
  std::size_t high = std::min(low + step, Size());
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    if (EndOf(middle) <= time)
      low = middle + 1;
    else
      high = middle;
  }
  return low;
}

std::size_t Spans::FirstBeginningAt(Ticks time) const {
  std::size_t low = 0;
  std::size_t high = Size();
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    if (BeginOf(middle) < time)
      low = middle + 1;
    else
      high = middle;
  }
  return low;
}

Ticks Spans::TicksBefore(Ticks time) const {
  const std::size_t next = FirstEndingAfter(time);
  const Ticks before = TotalOfFirst(next);
  if (next == Size()) return before;
  const Ticks begin = BeginOf(next);
  return begin < time ? before + (time - begin) : before;
}

bool Spans::IsCut(std::size_t index, std::size_t where) const {
  const auto found = std::lower_bound(cuts_.begin(), cuts_.end(), 4 * index);
  return found != cuts_.end() && *found / 4 == index && (*found & where) != 0;
}

}  // namespace timeline
