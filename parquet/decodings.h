// The reverse of encodings.h. Nothing of the bytes is trusted: all of it throws std::runtime_error.
#pragma once

#include <cstring>
#include <vector>

#include "thriftreader.h"

namespace parquet {

inline std::uint64_t LittleEndianAt(std::string_view bytes, std::size_t at, std::size_t size) {
  if (at > bytes.size() || size > bytes.size() - at) throw std::runtime_error("a page ends too early");
  std::uint64_t value = 0;
  for (std::size_t i = size; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes[at + i]);
  return value;
}

// `count` values of `width` bits side by side. A value may reach over nine bytes.
inline void GetBits(std::string_view bytes, std::size_t count, unsigned width,
                    std::vector<std::uint64_t>& out) {
  if ((count * width + 7) / 8 > bytes.size()) throw std::runtime_error("a page ends too early");
  for (std::size_t i = 0; i < count; ++i) {
    std::uint64_t value = 0;
    for (unsigned bit = 0; bit < width;) {
      const std::size_t at = i * width + bit;
      const unsigned offset = at % 8;
      value |= std::uint64_t{static_cast<unsigned char>(bytes[at / 8])} >> offset << bit;
      bit += 8 - offset;
    }
    out.push_back(width < 64 ? value & ((std::uint64_t{1} << width) - 1) : value);
  }
}

// Runs of one value, and groups of eight.
inline std::vector<std::uint64_t> GetHybrid(std::string_view bytes, std::size_t count, unsigned width) {
  if (width > 32) throw std::runtime_error("numbers are wider than any");
  std::vector<std::uint64_t> values;
  while (values.size() < count) {
    ThriftReader head(bytes);
    const std::uint64_t word = head.Varint();
    bytes.remove_prefix(head.Position());
    const std::size_t left = count - values.size();
    if (word & 1) {
      const std::uint64_t groups = word >> 1;
      if (groups * width > bytes.size() || groups > bytes.size() * 8 + 1)
        throw std::runtime_error("a page ends too early");
      GetBits(bytes, static_cast<std::size_t>(std::min<std::uint64_t>(groups * 8, left)), width, values);
      bytes.remove_prefix(static_cast<std::size_t>(groups * width));
    } else {
      const std::uint64_t value = LittleEndianAt(bytes, 0, (width + 7) / 8);
      if (value >> width) throw std::runtime_error("a number is wider than it is said to be");
      values.insert(values.end(), static_cast<std::size_t>(std::min<std::uint64_t>(word >> 1, left)), value);
      bytes.remove_prefix((width + 7) / 8);
    }
  }
  return values;
}

// As unsigned numbers of 64 bits, of which the lower ones count for narrower types.
inline std::vector<std::uint64_t> GetDeltas(std::string_view bytes, std::size_t expected) {
  ThriftReader head(bytes);
  const std::uint64_t blockSize = head.Varint(), miniblocks = head.Varint(), count = head.Varint();
  if (blockSize != 128 || miniblocks != 4 || count != expected)
    throw std::runtime_error("these deltas are not ours");
  std::vector<std::uint64_t> values, deltas;
  values.push_back(static_cast<std::uint64_t>(head.Int()));
  bytes.remove_prefix(head.Position());
  while (values.size() < count) {
    ThriftReader block(bytes);
    const auto least = static_cast<std::uint64_t>(block.Int());
    bytes.remove_prefix(block.Position());
    const std::uint64_t widths = LittleEndianAt(bytes, 0, 4);
    bytes.remove_prefix(4);
    for (unsigned mini = 0; mini < 4 && values.size() < count; ++mini) {
      const auto width = static_cast<unsigned>(widths >> 8 * mini & 0xFF);
      if (width > 64) throw std::runtime_error("numbers are wider than any");
      deltas.clear();
      GetBits(bytes, 32, width, deltas);
      bytes.remove_prefix(std::size_t{4} * width);
      for (std::size_t i = 0; i < deltas.size() && values.size() < count; ++i)
        values.push_back(values.back() + least + deltas[i]);
    }
  }
  return values;
}

}  // namespace parquet
