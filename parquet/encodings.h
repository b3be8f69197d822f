// How the values of a column become bytes. Numbers are those of the format's enumeration of encodings.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <type_traits>

#include "thrift.h"

namespace parquet {

enum class Encoding : std::int32_t { plain = 0, hybrid = 3, deltas = 5, dictionary = 8 };

// The lowest byte first; returns the place behind.
template <class Integer>
char* PutLittleEndian(char* at, Integer value) {
  for (std::size_t i = 0; i < sizeof value; ++i) at[i] = static_cast<char>(value >> 8 * i);
  return at + sizeof value;
}

template <class Integer>
void PutLittleEndian(std::string& out, Integer value) {
  char bytes[sizeof value];
  PutLittleEndian(bytes, value);
  out.append(bytes, sizeof value);
}

// Values of `width` bits side by side, from the lowest bit of the first byte on.
template <class Integer>
void PutBits(std::string& out, std::span<const Integer> values, unsigned width) {
  if (width == 0) return;
  const std::size_t begin = out.size();
  const std::size_t bits = values.size() * width;
  out.resize(begin + bits / 8 + sizeof(std::uint64_t));
  char* at = out.data() + begin;
  std::uint64_t word = 0;
  unsigned filled = 0;
  for (const std::uint64_t value : values) {
    word |= value << filled;
    filled += width;
    if (filled < 64) continue;
    at = PutLittleEndian(at, word);
    filled -= 64;
    word = filled == 0 ? 0 : value >> (width - filled);
  }
  if (filled > 0) PutLittleEndian(at, word);
  out.resize(begin + (bits + 7) / 8);
}

// Small numbers, as runs of one value and as groups of eight with `width` bits each.
template <class Integer>
class Hybrid {
 public:
  Hybrid(std::string& out, unsigned width) : out_(out), width_(width) {}

  void Put(std::span<const Integer> values) {
    std::size_t groupsFrom = 0;  // of the groups that are not written yet
    for (std::size_t at = 0; at < values.size();) {
      const std::size_t run = RunAt(values, at);
      if (run >= shortestRun) {
        PutGroups(values.subspan(groupsFrom, at - groupsFrom));
        PutRun(values[at], run);
        groupsFrom = at + run;
      }
      at += run >= shortestRun ? run : groupSize;
    }
    if (groupsFrom < values.size()) PutGroups(values.subspan(groupsFrom));
  }

  void PutRun(std::uint64_t value, std::size_t length) {
    PutVarint(out_, std::uint64_t{length} << 1);
    for (unsigned bits = 0; bits < width_; bits += 8) out_ += static_cast<char>(value >> bits);
  }

 private:
  static constexpr std::size_t groupSize = 8;
  static constexpr std::size_t shortestRun = 8;

  static std::size_t RunAt(std::span<const Integer> values, std::size_t at) {
    std::size_t end = at + 1;
    while (end < values.size() && values[end] == values[at]) ++end;
    return end - at;
  }

  // The last group of all is filled up with zeros; readers know how many values there are.
  void PutGroups(std::span<const Integer> values) {
    if (values.empty()) return;
    const std::size_t groups = (values.size() + groupSize - 1) / groupSize;
    PutVarint(out_, std::uint64_t{groups} << 1 | 1);
    const std::size_t end = out_.size() + groups * width_;
    PutBits(out_, values, width_);
    out_.resize(end);
  }

  std::string& out_;
  unsigned width_;
};

// The differences between integers that follow each other: two or three bytes for a time stamp. Differences
// wrap around, so that any values may follow each other.
template <class Unsigned>
class Deltas {
 public:
  explicit Deltas(std::string& out) : out_(out) {}

  // At least one value.
  void Put(std::span<const Unsigned> values) {
    PutHead(values.front(), values.size());
    std::size_t at = 0;  // the last value that is there
    for (; at + blockSize < values.size(); at += blockSize) PutBlock<true>(values.subspan(at, blockSize + 1));
    if (at + 1 < values.size()) PutBlock<false>(values.subspan(at));
  }

  // The same for values that are all equal: no difference takes a bit.
  void PutEqual(Unsigned value, std::size_t count) {
    PutHead(value, count);
    out_.append((count - 1 + blockSize - 1) / blockSize * (1 + miniblocks), '\0');
  }

 private:
  static constexpr std::size_t blockSize = 128;
  static constexpr std::size_t miniblocks = 4;
  static constexpr std::size_t miniblockSize = blockSize / miniblocks;

  void PutHead(Unsigned first, std::size_t count) {
    PutVarint(out_, blockSize);
    PutVarint(out_, miniblocks);
    PutVarint(out_, count);
    PutVarint(out_, ZigZag(Signed(first)));
  }

  static std::int64_t Signed(Unsigned value) { return static_cast<std::make_signed_t<Unsigned>>(value); }

  // The differences between the values, of which the first one is the last of the block before. For a full
  // block compilers know how long the loops are.
  template <bool isFull>
  void PutBlock(std::span<const Unsigned> values) {
    const std::size_t count = isFull ? blockSize : values.size() - 1;
    Unsigned deltas[blockSize];
    for (std::size_t i = 0; i < count; ++i) deltas[i] = static_cast<Unsigned>(values[i + 1] - values[i]);
    std::int64_t least = Signed(deltas[0]);
    for (std::size_t i = 1; i < count; ++i) least = std::min(least, Signed(deltas[i]));
    for (std::size_t i = 0; i < count; ++i) deltas[i] -= static_cast<Unsigned>(least);
    if (!isFull) std::fill(deltas + count, deltas + blockSize, Unsigned{0});
    PutVarint(out_, ZigZag(least));
    unsigned widths[miniblocks];
    for (std::size_t i = 0; i < miniblocks; ++i) {
      widths[i] = WidthOf(deltas + i * miniblockSize);
      out_ += static_cast<char>(widths[i]);
    }
    for (std::size_t i = 0; i * miniblockSize < count; ++i)
      PutBits<Unsigned>(out_, {deltas + i * miniblockSize, miniblockSize}, widths[i]);
  }

  static unsigned WidthOf(const Unsigned* values) {
    Unsigned all = 0;
    for (std::size_t i = 0; i < miniblockSize; ++i) all |= values[i];
    return static_cast<unsigned>(std::bit_width(all));
  }

  std::string& out_;
};

}  // namespace parquet
