// Thrift's compact protocol, as far as the metadata of Parquet files needs it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace parquet {

// Seven bits a byte, the lowest first.
inline void PutVarint(std::string& out, std::uint64_t value) {
  for (; value >= 0x80; value >>= 7) out += static_cast<char>(value | 0x80);
  out += static_cast<char>(value);
}

// A number near 0 has few bits, whatever its sign.
inline std::uint64_t ZigZag(std::int64_t value) {
  return static_cast<std::uint64_t>(value) << 1 ^ static_cast<std::uint64_t>(value >> 63);
}

// Writes one struct with its fields in the order of their ids, and what is nested in it.
class Thrift {
 public:
  enum Type : std::uint8_t { yes = 1, no, byte, int32 = 5, int64, binary = 8, list, structure = 12 };

  explicit Thrift(std::string& out) : out_(out) {}

  void Bool(int id, bool value) { Header(id, value ? yes : no); }
  void Byte(int id, std::int8_t value) {
    Header(id, byte);
    out_ += static_cast<char>(value);
  }
  void Int32(int id, std::int32_t value) {
    Header(id, int32);
    PutVarint(out_, ZigZag(value));
  }
  void Int64(int id, std::uint64_t value) {
    Header(id, int64);
    PutVarint(out_, ZigZag(static_cast<std::int64_t>(value)));
  }
  void Text(int id, std::string_view bytes) {
    Header(id, binary);
    Element(bytes);
  }

  // `count` elements follow: calls of Element() of one type, or structs between BeginElement() and End(), or,
  // with Raw(), structs that were written before.
  void List(int id, Type type, std::size_t count) {
    Header(id, list);
    out_ += static_cast<char>((count < 15 ? count : 15) << 4 | type);
    if (count >= 15) PutVarint(out_, count);
  }
  void Element(std::int32_t value) { PutVarint(out_, ZigZag(value)); }
  void Element(std::string_view bytes) {
    PutVarint(out_, bytes.size());
    out_ += bytes;
  }
  void BeginElement() { lastIds_.push_back(0); }
  void Raw(std::string_view bytes) { out_ += bytes; }

  void BeginStruct(int id) {
    Header(id, structure);
    BeginElement();
  }
  // Of the innermost struct.
  void End() {
    out_ += '\0';
    lastIds_.pop_back();
  }

 private:
  // No struct of Parquet leaves out more than 14 ids.
  void Header(int id, Type type) {
    out_ += static_cast<char>((id - lastIds_.back()) << 4 | type);
    lastIds_.back() = id;
  }

  std::string& out_;
  std::vector<int> lastIds_ = {0};  // of the structs that are open, the innermost last
};

}  // namespace parquet
