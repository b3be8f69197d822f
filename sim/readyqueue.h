// The tasks that are ready to run: first come, first served within a priority.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace sim {

class ReadyQueue {
 public:
  explicit ReadyQueue(size_t taskCount) : next_(taskCount), before_(taskCount), contained_(taskCount) {
    Clear();
  }

  void Clear();
  void PushBack(uint32_t task, uint8_t priority);
  void PushFront(uint32_t task, uint8_t priority);
  // The highest priority with a ready task; -1 when there is none.
  int TopPriority() const;
  // The first task of that priority. The queue is not empty.
  uint32_t Top() const { return head_[static_cast<size_t>(TopPriority())]; }
  uint32_t Pop();
  bool Contains(uint32_t task) const { return contained_[task]; }
  // The task is in the queue with this priority.
  void Remove(uint32_t task, uint8_t priority);

 private:
  static constexpr uint32_t none = UINT32_MAX;

  void Add(uint32_t task, uint8_t priority);

  std::array<uint32_t, 256> head_{};
  std::array<uint32_t, 256> tail_{};    // means nothing where head_ is none
  std::array<uint64_t, 4> occupied_{};  // bit p: a task of priority p is ready
  std::vector<uint32_t> next_;          // by task: the one behind it in its priority
  std::vector<uint32_t> before_;        // means nothing for the first
  std::vector<bool> contained_;
};

}  // namespace sim
