// What the writer and the reader of TaskLog files share in code: a buffered stream, integers in bytes.
#pragma once

#include <tasklog/tasklog.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "model/block.h"
#include "model/thresholds.h"
#include "model/types.h"

// Owns an open stream with a buffer large enough that the calls into the system do not count. Modes end in
// "e": a program that the host starts meanwhile does not inherit the file.
class Stream {
 public:
  Stream(const char* path, const char* mode)
      : buffer_(static_cast<char*>(std::malloc(bufferSize))), file_(std::fopen(path, mode)) {
    // Without this buffer the stream uses a small one of its own.
    if (file_ && buffer_) std::setvbuf(file_.get(), buffer_.get(), _IOFBF, bufferSize);
  }
  bool IsOpen() const { return file_ != nullptr; }
  std::FILE* File() const { return file_.get(); }
  // From here to the end; 0 where that is not known.
  u64 SizeBytes() const {
    if (std::fseek(file_.get(), 0, SEEK_END) != 0) return 0;
    const long size = std::ftell(file_.get());
    std::rewind(file_.get());
    return size > 0 ? static_cast<u64>(size) : 0;
  }

 private:
  static constexpr std::size_t bufferSize = thresholds::streamBuffer;

  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<char, Free> buffer_;  // outlives the stream, whose closing still writes from it
  std::unique_ptr<std::FILE, Close> file_;
};

// Reads a file in blocks. Never asks for bytes that the file need not have, so that a pipe whose writer waits
// does not stall; every short read is thrown as a bare u32 status.
class Source {
 public:
  explicit Source(std::FILE* file) : file_(file) {}

  // The next `size` bytes, at most `capacity`, valid until the next call. `certain` (at least `size`) tells
  // how many follow in a file that is whole.
  const u8* Take(std::size_t size, u64 certain) {
    if (static_cast<std::size_t>(end_ - next_) < size) Refill(size, certain);
    const u8* taken = next_;
    next_ += size;
    return taken;
  }
  const u8* Take(std::size_t size) { return Take(size, size); }

  static constexpr std::size_t capacity = thresholds::fileBlock;

 private:
  void Refill(std::size_t size, u64 certain) {
    const u8* end = std::copy(next_, end_, buffer_);
    next_ = buffer_;
    const auto held = static_cast<std::size_t>(end - buffer_);
    const std::size_t wanted = static_cast<std::size_t>(std::min<u64>(capacity, certain)) - held;
    end_ = end + fread_unlocked(buffer_ + held, 1, wanted, file_);
    if (static_cast<std::size_t>(end_ - next_) < size)
      throw u32{std::ferror(file_) ? TLErrFileRead : TLErrFileInvalid};
  }

  std::FILE* file_;  // borrowed
  u8 buffer_[capacity];
  const u8* next_ = buffer_;
  const u8* end_ = buffer_;
};

// Writes a file in blocks; every short write is thrown as a bare u32 status.
class Sink {
 public:
  explicit Sink(std::FILE* file) : file_(file) {}

  void Put(const void* bytes, std::size_t size) {
    if (size > sizeof buffer_ - used_) Flush();
    if (size > sizeof buffer_) return Write(bytes, size);
    std::memcpy(buffer_ + used_, bytes, size);
    used_ += size;
  }
  // Hands what was put to the stream.
  void Flush() {
    Write(buffer_, used_);
    used_ = 0;
  }

 private:
  void Write(const void* bytes, std::size_t size) {
    if (fwrite_unlocked(bytes, 1, size, file_) != size) throw u32{TLErrFileWrite};
  }

  std::FILE* file_;  // borrowed
  u8 buffer_[thresholds::fileBlock];
  std::size_t used_ = 0;
};

// An integer between the order of bytes of this machine and that of a file, which is little-endian.
template <class Integer>
Integer SwapToLE(Integer value) {
  if constexpr (std::endian::native == std::endian::big) {
    if constexpr (sizeof value == 8) return __builtin_bswap64(value);
    if constexpr (sizeof value == 4) return __builtin_bswap32(value);
    if constexpr (sizeof value == 2) return __builtin_bswap16(value);
  }
  return value;
}

template <class Integer>
void StoreLE(u8* bytes, Integer value) {
  value = SwapToLE(value);
  std::memcpy(bytes, &value, sizeof value);
}

template <class Integer>
Integer LoadLE(const u8* bytes) {
  Integer value;
  std::memcpy(&value, bytes, sizeof value);
  return SwapToLE(value);
}
