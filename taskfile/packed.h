// What Packer and Unpacker share: docs/viewer.md, Packed files.
#pragma once

#include "taskfile/format.h"

namespace taskfile {

enum BlockKind : u8 { literalBlock = 0, recordsBlock = 1 };

inline constexpr int koBits = 4;
inline constexpr u16 sameName = 0xFFFF;
inline constexpr std::size_t slack = 8;  // bytes that may be read behind a column

inline bool HasName(u32 koType) { return koType == koTestpoint || koType == koTimingIssue; }
inline std::size_t ColumnSize(std::size_t count, int bits) {
  return (count * static_cast<std::size_t>(bits) + 7) / 8;
}

// Without a loop, so that a compiler sees one instruction.
inline u32 Load32(const char* bytes) {
  const auto at = [bytes](int i) { return u32{static_cast<u8>(bytes[i])} << 8 * i; };
  return at(0) | at(1) | at(2) | at(3);
}
inline u64 Load64(const char* bytes) {
  const auto at = [bytes](int i) { return u64{static_cast<u8>(bytes[i])} << 8 * i; };
  return at(0) | at(1) | at(2) | at(3) | at(4) | at(5) | at(6) | at(7);
}
inline void Store32(char* bytes, u32 value) {
  bytes[0] = static_cast<char>(value);
  bytes[1] = static_cast<char>(value >> 8);
  bytes[2] = static_cast<char>(value >> 16);
  bytes[3] = static_cast<char>(value >> 24);
}

}  // namespace taskfile
