// Takes the bytes of a fuzzer apart into values. Where they end all values are 0, which each use takes for
// the plain case.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

  bool Ended() const { return next_ == end_; }

  std::uint8_t Byte() { return Ended() ? std::uint8_t{0} : *next_++; }

  // Little-endian.
  std::uint32_t Word() {
    std::uint32_t word = Byte();
    for (int shift = 8; shift < 32; shift += 8) word |= std::uint32_t{Byte()} << shift;
    return word;
  }
  std::uint64_t Long() {
    const std::uint64_t low = Word();
    return std::uint64_t{Word()} << 32 | low;
  }

  // From 0 to count - 1; of one byte as long as that reaches.
  std::uint32_t Below(std::size_t count) {
    const std::uint32_t value = count <= 256 ? Byte() : Word();
    return value % static_cast<std::uint32_t>(count);
  }

  // One time in `times`, never by default.
  bool Rarely(std::uint32_t times) { return Below(times) == times - 1; }

  template <class Value, std::size_t count>
  const Value& Pick(const Value (&values)[count]) {
    return values[Below(count)];
  }

  std::string Text(std::size_t longest) {
    std::string text(Below(longest + 1), '\0');
    for (char& c : text) c = static_cast<char>(Byte());
    return text;
  }

  std::string Rest() {
    std::string rest(next_, end_);
    next_ = end_;
    return rest;
  }

 private:
  const std::uint8_t* next_;
  const std::uint8_t* end_;
};

}  // namespace fuzz
