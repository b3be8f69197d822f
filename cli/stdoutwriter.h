// Standard output for large amounts of text: formatted into one block, written when the block is full.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <string_view>

#include "print.h"

namespace cli {

// Call Finish() at the end: the destructor drops what is still in the block.
class StdoutWriter {
 public:
  StdoutWriter() = default;
  StdoutWriter(const StdoutWriter&) = delete;
  StdoutWriter& operator=(const StdoutWriter&) = delete;

  // The block to format into; call EndOfLine() now and then.
  fmt::memory_buffer& Block() { return block_; }

  void EndOfLine() {
    if (block_.size() >= blockBytes) Flush();
  }

  template <class... Args>
  void Print(fmt::format_string<Args...> format, Args&&... args) {
    cli::Print(block_, format, std::forward<Args>(args)...);
    EndOfLine();
  }

  // Writes what is left. Throws ClosedPipe when the reader has gone, else Failure.
  void Finish() { Flush(); }

 private:
  static constexpr std::size_t blockBytes = 256 * 1024;

  void Flush();

  fmt::memory_buffer block_;
};

}  // namespace cli
