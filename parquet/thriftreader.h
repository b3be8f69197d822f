// Reads what Thrift (thrift.h) writes. Nothing of it is trusted: it throws std::runtime_error.
#pragma once

#include <stdexcept>
#include <string_view>

#include "thrift.h"

namespace parquet {

class ThriftReader {
 public:
  explicit ThriftReader(std::string_view bytes) : bytes_(bytes) {}

  std::size_t Position() const { return at_; }

  // Calls `field` with the id and the type of each field. It reads the value, or skips it.
  template <class Field>
  void Struct(Field field) {
    int id = 0;
    while (const unsigned head = Byte()) {
      id = head >> 4 ? id + static_cast<int>(head >> 4) : static_cast<int>(Int());
      field(id, static_cast<int>(head & 15));
    }
  }

  // Calls `element` with the type of each element.
  template <class Element>
  void List(Element element) {
    const unsigned head = Byte();
    const std::uint64_t count = head >> 4 < 15 ? head >> 4 : Varint();
    if (count > bytes_.size() - at_) throw std::runtime_error("a list is longer than the file");
    for (std::uint64_t i = 0; i < count; ++i) element(static_cast<int>(head & 15));
  }

  std::int64_t Int() {
    const std::uint64_t value = Varint();
    return static_cast<std::int64_t>(value >> 1 ^ (0 - (value & 1)));
  }

  std::string_view Text() {
    const std::uint64_t size = Varint();
    if (size > bytes_.size() - at_) throw std::runtime_error("a text goes beyond the end");
    at_ += static_cast<std::size_t>(size);
    return bytes_.substr(at_ - static_cast<std::size_t>(size), static_cast<std::size_t>(size));
  }

  void Skip(int type, int depth = 0) {
    constexpr int deepest = 16;
    if (depth > deepest) throw std::runtime_error("structs are nested too deeply");
    switch (type) {
      case Thrift::yes:
      case Thrift::no: return;
      case Thrift::byte: Byte(); return;
      case Thrift::binary: Text(); return;
      case Thrift::list: List([&](int of) { Skip(of, depth + 1); }); return;
      case Thrift::structure: Struct([&](int, int of) { Skip(of, depth + 1); }); return;
      default: Varint();
    }
  }

  std::uint64_t Varint() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      const unsigned byte = Byte();
      value |= std::uint64_t{byte & 0x7F} << shift;
      if (byte < 0x80) return value;
    }
    throw std::runtime_error("a number is too long");
  }

 private:
  unsigned Byte() {
    if (at_ == bytes_.size()) throw std::runtime_error("the file ends too early");
    return static_cast<unsigned char>(bytes_[at_++]);
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
};

}  // namespace parquet
