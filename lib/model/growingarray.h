// An array of plain values with spare room behind them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>

#include "model/block.h"
#include "model/pages.h"

// Grows in place where the system can do so, large blocks without a copy. New values are built in the spare
// room, where nobody sees them until Extend(): a failure leaves nothing to undo.
template <class Value>
class GrowingArray {
  static_assert(std::is_trivially_copyable_v<Value>);

 public:
  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  const Value* begin() const { return data(); }
  const Value* end() const { return data() + size_; }
  Value* begin() { return data(); }
  Value* end() { return data() + size_; }
  const Value& operator[](std::size_t index) const { return data()[index]; }
  Value& operator[](std::size_t index) { return data()[index]; }
  const Value& front() const { return data()[0]; }
  const Value& back() const { return data()[size_ - 1]; }

  std::size_t SpareSize() const { return block_.SizeBytes() / sizeof(Value) - size_; }
  // Makes room for `count` values behind the last one and returns where it begins; throws bad_alloc, with the
  // array as it was. May move the values. Grows by a quarter at least, so that the cost of a value stays the
  // same however often an array grows.
  Value* Spare(std::size_t count) {
    if (SpareSize() < count && !Resize(size_ + std::max(count, size_ / 4))) throw std::bad_alloc();
    return data() + size_;
  }
  // Takes over values that were built at the start of the spare room.
  void Extend(std::size_t count) { size_ += count; }
  // Gives much spare room back. Where that fails, the larger block serves as well.
  void TrimSpare() {
    if (SpareSize() > size_ / 2 + largePageSize / sizeof(Value)) Resize(size_ + size_ / 4);
  }

 private:
  // False when there is no memory: the array is then as it was. Where addresses have 32 bits, a count from
  // outside may be too wide for any.
  bool Resize(std::size_t capacity) {
    return capacity <= SIZE_MAX / sizeof(Value) && block_.Resize(capacity * sizeof(Value));
  }
  Value* data() const { return static_cast<Value*>(block_.Data()); }

  Block block_;
  std::size_t size_ = 0;
};
