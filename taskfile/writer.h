// Writes TaskLog files byte by byte.
#pragma once

#include <functional>
#include <string>

#include "taskfile/format.h"

namespace taskfile {

// Takes the bytes of a file one piece after the other.
using Sink = std::function<void(std::string_view)>;

class Writer {
 public:
  explicit Writer(Sink sink) : sink_(std::move(sink)) {}
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void Put(const Header& header);
  // `name` ends before its NUL.
  void BeginSection(std::string_view name, u32 priority, u32 timeSlice, u32 count);
  void PutRecord(u32 koType, u32 id, u64 time);
  void Put(std::string_view bytes);
  // At the end of all.
  void Flush();

 private:
  template <class Integer>
  void PutLittle(Integer value) {
    for (std::size_t i = 0; i < sizeof value; ++i) block_ += static_cast<char>(value >> 8 * i & 0xFF);
  }
  void FlushFull() {
    if (block_.size() >= fullBytes) Flush();
  }

  static constexpr std::size_t fullBytes = 1 << 18;
  Sink sink_;
  std::string block_;
};

}  // namespace taskfile
