#include "spans.h"

#include <algorithm>

namespace timeline {

void Spans::Add(Ticks begin, Ticks end, bool cutBegin, bool cutEnd) {
  if (cutBegin || cutEnd) cuts_.push_back(4 * Size() + (cutBegin ? atBegin : 0) + (cutEnd ? atEnd : 0));
  sums_.push_back({end, TotalOfFirst(Size()) + (end - begin)});
}

std::size_t Spans::FirstEndingAfter(Ticks time, std::size_t hint) const {
  std::size_t low = hint;
  std::size_t step = 1;
  while (low + step <= Size() && sums_[low + step - 1].end <= time) {
    low += step;
    step *= 2;
  }
  std::size_t high = std::min(low + step, Size());
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    if (sums_[middle].end <= time)
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
