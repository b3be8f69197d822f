// Unsigned integers of 128 bits.
#pragma once

#include <compare>
#include <cstdint>

namespace exporters {

#ifdef __SIZEOF_INT128__

__extension__ using Wide = unsigned __int128;

#else

// For machines of 32 bits, whose compilers have none.
class Wide {
 public:
  constexpr Wide(std::uint64_t value = 0) : low_(value) {}
  constexpr explicit operator std::uint64_t() const { return low_; }

  friend constexpr auto operator<=>(const Wide&, const Wide&) = default;
  friend constexpr bool operator==(const Wide&, const Wide&) = default;

  friend constexpr Wide operator+(const Wide& a, const Wide& b) {
    const std::uint64_t low = a.low_ + b.low_;
    return {a.high_ + b.high_ + (low < a.low_), low};
  }
  friend constexpr Wide operator-(const Wide& a, const Wide& b) {
    return {a.high_ - b.high_ - (a.low_ < b.low_), a.low_ - b.low_};
  }
  friend constexpr Wide operator<<(const Wide& a, unsigned bits) {
    if (bits >= 64) return {a.low_ << (bits - 64), 0};
    return bits == 0 ? a : Wide{a.high_ << bits | a.low_ >> (64 - bits), a.low_ << bits};
  }
  friend constexpr Wide operator*(const Wide& a, const Wide& b) {
    Wide product;
    for (unsigned bit = 0; bit < 64; ++bit)
      if (b.low_ >> bit & 1) product = product + (a << bit);
    return product + Wide{a.low_ * b.high_, 0};
  }
  // Bit by bit, as on paper; no divisor here has its highest bit set.
  friend constexpr Wide operator/(const Wide& a, const Wide& b) {
    Wide quotient;
    Wide rest;
    for (unsigned bit = 128; bit-- > 0;) {
      const std::uint64_t next = bit < 64 ? a.low_ >> bit : a.high_ >> (bit - 64);
      rest = (rest << 1) + (next & 1);
      quotient = quotient << 1;
      if (rest < b) continue;
      rest = rest - b;
      quotient = quotient + 1;
    }
    return quotient;
  }
  friend constexpr Wide operator%(const Wide& a, const Wide& b) { return a - a / b * b; }

  constexpr Wide& operator+=(const Wide& other) { return *this = *this + other; }
  constexpr Wide& operator/=(const Wide& other) { return *this = *this / other; }

 private:
  constexpr Wide(std::uint64_t high, std::uint64_t low) : high_(high), low_(low) {}

  std::uint64_t high_ = 0;
  std::uint64_t low_ = 0;
};

#endif

}  // namespace exporters
