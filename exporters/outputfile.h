// A file that is written from its beginning to its end, in large blocks.
#pragma once

#include <fmt/format.h>

#include <cstddef>
#include <string>

namespace exporters {

class OutputFile {
 public:
  // "-" is standard output; any other file must be there, and loses what it holds.
  explicit OutputFile(const std::string& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  // The block to append to; call FlushIfFull() behind each record. What is in the block when this object goes
  // was given up.
  fmt::memory_buffer& Block() { return block_; }
  void FlushIfFull() {
    if (block_.size() >= blockBytes) Flush();
  }
  // Throws std::system_error.
  void Flush();

 private:
  static constexpr std::size_t blockBytes = 256 * 1024;

  std::string path_;
  int fd_;
  fmt::memory_buffer block_;
};

}  // namespace exporters
