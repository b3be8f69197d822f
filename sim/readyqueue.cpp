#include "readyqueue.h"

#include <bit>

namespace sim {

void ReadyQueue::Clear() {
  head_.fill(none);
  occupied_.fill(0);
  contained_.assign(contained_.size(), false);
}

void ReadyQueue::PushBack(uint32_t task, uint8_t priority) {
  contained_[task] = true;
  next_[task] = none;
  if (head_[priority] == none) return Add(task, priority);
  next_[tail_[priority]] = task;
  before_[task] = tail_[priority];
  tail_[priority] = task;
}

void ReadyQueue::PushFront(uint32_t task, uint8_t priority) {
  contained_[task] = true;
  next_[task] = head_[priority];
  if (head_[priority] == none) return Add(task, priority);
  before_[head_[priority]] = task;
  head_[priority] = task;
}

int ReadyQueue::TopPriority() const {
  for (int group = 3; group >= 0; --group) {
    const uint64_t bits = occupied_[static_cast<size_t>(group)];
    if (bits != 0) return group * 64 + 63 - std::countl_zero(bits);
  }
  return -1;
}

uint32_t ReadyQueue::Pop() {
  const uint32_t task = Top();
  Remove(task, static_cast<uint8_t>(TopPriority()));
  return task;
}

void ReadyQueue::Remove(uint32_t task, uint8_t priority) {
  contained_[task] = false;
  const bool isFirst = head_[priority] == task;
  const bool isLast = tail_[priority] == task;
  if (isFirst) head_[priority] = next_[task];
  if (!isFirst) next_[before_[task]] = next_[task];
  if (isLast) tail_[priority] = before_[task];
  if (!isLast) before_[next_[task]] = before_[task];
  if (head_[priority] == none) occupied_[priority / 64] &= ~(uint64_t{1} << (priority % 64));
}

void ReadyQueue::Add(uint32_t task, uint8_t priority) {
  head_[priority] = task;
  tail_[priority] = task;
  occupied_[priority / 64] |= uint64_t{1} << (priority % 64);
}

}  // namespace sim
