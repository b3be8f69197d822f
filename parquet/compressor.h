// Bytes made shorter, as zstd does it.
#pragma once

#include <string>
#include <string_view>

namespace parquet {

class Compressor {
 public:
  // Of zstd: 1 to 19, and below 0 those that are faster still.
  explicit Compressor(int level);
  Compressor(const Compressor&) = delete;
  Compressor& operator=(const Compressor&) = delete;
  ~Compressor();

  // Valid until the next call. Throws std::runtime_error.
  std::string_view Compress(std::string_view bytes);

 private:
  int level_;
  void* context_;
  std::string buffer_;
};

// The reverse, into just so many bytes. Throws std::runtime_error.
std::string Decompress(std::string_view bytes, std::size_t size);

}  // namespace parquet
