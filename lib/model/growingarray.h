// An array of plain values with spare room behind them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <type_traits>

// Grows in place where the system can do so, which for large blocks means without a copy. New values are
// built in the spare room, unseen until they are taken over: a failure leaves nothing to undo.
template <class Value>
class GrowingArray {
  static_assert(std::is_trivially_copyable_v<Value>);

 public:
  GrowingArray() = default;
  ~GrowingArray() { std::free(data_); }
  GrowingArray(const GrowingArray&) = delete;
  GrowingArray& operator=(const GrowingArray&) = delete;

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  const Value* begin() const { return data_; }
  const Value* end() const { return data_ + size_; }
  Value* begin() { return data_; }
  Value* end() { return data_ + size_; }
  const Value& operator[](std::size_t index) const { return data_[index]; }
  Value& operator[](std::size_t index) { return data_[index]; }
  const Value& front() const { return data_[0]; }
  const Value& back() const { return data_[size_ - 1]; }

  std::size_t SpareSize() const { return capacity_ - size_; }
  // Makes room for `count` values behind the last one and returns where it begins; throws bad_alloc, with the
  // array as it was. Moves the values. Grown by a quarter at least, so that the cost per value stays the same
  // however often an array grows.
  Value* Spare(std::size_t count) {
    if (SpareSize() < count) Reallocate(std::max(size_ + count, size_ + size_ / 4));
    return data_ + size_;
  }
  // Takes over values that were built at the start of the spare room.
  void Extend(std::size_t count) { size_ += count; }
  // Gives spare room back where there is much of it.
  void TrimSpare() {
    if (SpareSize() > size_ / 2 + (std::size_t{2} << 20) / sizeof(Value)) ShrinkTo(size_ + size_ / 4);
  }

 private:
  void Reallocate(std::size_t capacity) {
    if (capacity > PTRDIFF_MAX / sizeof(Value)) throw std::bad_alloc();
    void* data = std::realloc(static_cast<void*>(data_), capacity * sizeof(Value));
    if (!data) throw std::bad_alloc();
    data_ = static_cast<Value*>(data);
    capacity_ = capacity;
  }
  // The larger block serves as well when there is no other.
  void ShrinkTo(std::size_t capacity) {
    void* data = std::realloc(static_cast<void*>(data_), std::max<std::size_t>(capacity, 1) * sizeof(Value));
    if (!data) return;
    data_ = static_cast<Value*>(data);
    capacity_ = std::max<std::size_t>(capacity, 1);
  }

  Value* data_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};
