// How the values of a column become bytes. Numbers are those of the format's enumeration of encodings.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "thrift.h"

namespace parquet {

enum class Encoding : std::int32_t { plain = 0, hybrid = 3, deltas = 5, dictionary = 8 };

// The lowest byte first.
template <class Integer>
void PutLittleEndian(std::string& out, Integer value) {
  char bytes[sizeof value];
  for (std::size_t i = 0; i < sizeof value; ++i) bytes[i] = static_cast<char>(value >> 8 * i);
  out.append(bytes, sizeof value);
}

// Values of `width` bits side by side, from the lowest bit of the first byte on.
template <class Integer>
void PutBits(std::string& out, std::span<const Integer> values, unsigned width) {
  std::uint64_t word = 0;
  unsigned filled = 0;
  for (const std::uint64_t value : values) {
    word |= value << filled;
    filled += width;
    if (filled < 64) continue;
    PutLittleEndian(out, word);
    filled -= 64;
    word = filled == 0 ? 0 : value >> (width - filled);
  }
  for (; filled > 0; word >>= 8, filled -= filled < 8 ? filled : 8) out += static_cast<char>(word);
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

 private:
  static constexpr std::size_t groupSize = 8;
  static constexpr std::size_t shortestRun = 8;

  static std::size_t RunAt(std::span<const Integer> values, std::size_t at) {
    std::size_t end = at + 1;
    while (end < values.size() && values[end] == values[at]) ++end;
    return end - at;
  }

  void PutRun(std::uint64_t value, std::size_t length) {
    PutVarint(out_, std::uint64_t{length} << 1);
    for (unsigned bits = 0; bits < width_; bits += 8) out_ += static_cast<char>(value >> bits);
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

  void Put(std::span<const Unsigned> values) {
    PutVarint(out_, blockSize);
    PutVarint(out_, miniblocks);
    PutVarint(out_, values.size());
    PutVarint(out_, ZigZag(values.empty() ? 0 : Signed(values.front())));
    for (std::size_t at = 1; at < values.size(); at += blockSize)
      PutBlock(values.subspan(at - 1, std::min(blockSize + 1, values.size() - at + 1)));
  }

 private:
  static constexpr std::size_t blockSize = 128;
  static constexpr std::size_t miniblocks = 4;
  static constexpr std::size_t miniblockSize = blockSize / miniblocks;

  static std::int64_t Signed(Unsigned value) { return static_cast<std::make_signed_t<Unsigned>>(value); }

  // The differences between the values, of which the first one is the last of the block before.
  void PutBlock(std::span<const Unsigned> values) {
    const std::size_t count = values.size() - 1;
    Unsigned deltas[blockSize] = {};
    std::int64_t least = INT64_MAX;
    for (std::size_t i = 0; i < count; ++i) {
      deltas[i] = static_cast<Unsigned>(values[i + 1] - values[i]);
      least = std::min(least, Signed(deltas[i]));
    }
    for (std::size_t i = 0; i < count; ++i) deltas[i] -= static_cast<Unsigned>(least);
    PutVarint(out_, ZigZag(least));
    unsigned widths[miniblocks];
    for (std::size_t i = 0; i < miniblocks; ++i) {
      widths[i] = WidthOf(std::span(deltas).subspan(i * miniblockSize, miniblockSize));
      out_ += static_cast<char>(widths[i]);
    }
    for (std::size_t i = 0; i * miniblockSize < count; ++i)
      PutBits(out_, std::span<const Unsigned>(deltas).subspan(i * miniblockSize, miniblockSize), widths[i]);
  }

  static unsigned WidthOf(std::span<const Unsigned> values) {
    Unsigned all = 0;
    for (const Unsigned value : values) all |= value;
    return static_cast<unsigned>(std::bit_width(all));
  }

  std::string& out_;
};

}  // namespace parquet
