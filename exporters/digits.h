// Numbers as decimal digits, where there is room for them. `at` is where the first digit goes; what is
// returned is behind the last.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace exporters {

inline constexpr std::size_t mostDigits = 20;  // of 64 bits

// "00" to "99".
inline constexpr std::array<char, 200> digitPairs = [] {
  std::array<char, 200> pairs = {};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

inline void PutPair(char* at, std::uint32_t number) { std::memcpy(at, digitPairs.data() + 2 * number, 2); }

// The steps depend on each other as little as possible: a processor does several at a time.
inline char* PutEight(char* at, std::uint32_t number) {
  const std::uint32_t high = number / 10000;
  const std::uint32_t low = number % 10000;
  PutPair(at, high / 100);
  PutPair(at + 2, high % 100);
  PutPair(at + 4, low / 100);
  PutPair(at + 6, low % 100);
  return at + 8;
}

// Just `width` digits, zeros in front.
inline char* PutPadded(char* at, std::uint64_t number, std::size_t width) {
  constexpr std::uint32_t eightDigits = 100'000'000;
  char* const end = at + width;
  for (; width >= 8; width -= 8, number /= eightDigits)
    PutEight(at + width - 8, static_cast<std::uint32_t>(number % eightDigits));
  auto rest = static_cast<std::uint32_t>(number);
  for (; width >= 2; width -= 2, rest /= 100) PutPair(at + width - 2, rest % 100);
  if (width == 1) *at = static_cast<char>('0' + rest);
  return end;
}

inline constexpr std::array<std::uint64_t, mostDigits> powersOfTen = [] {
  std::array<std::uint64_t, mostDigits> powers = {1};
  for (std::size_t i = 1; i < mostDigits; ++i) powers[i] = powers[i - 1] * 10;
  return powers;
}();

// A bit is 0.301 digits: that is one digit too few, or right.
inline char* PutNumber(char* at, std::uint64_t number) {
  const std::uint64_t atLeastOne = number | 1;
  const auto fewest = static_cast<std::size_t>(std::bit_width(atLeastOne)) * 1233 / 4096;
  return PutPadded(at, number, fewest + (atLeastOne >= powersOfTen[fewest]));
}

}  // namespace exporters
