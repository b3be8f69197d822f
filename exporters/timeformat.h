// Ticks of one log as seconds from its start, exact: decimal digits, no floating point.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <string>

namespace exporters {

// In decimal digits, at several times the speed of a format string.
void AppendNumber(fmt::memory_buffer& out, std::uint64_t number);

// A sign, the seconds, a point and the decimals.
inline constexpr std::size_t mostTimeBytes = 1 + 20 + 1 + 19;

// Prints as many decimals as tell two neighbouring ticks apart, at least six, the last one rounded. A time
// typed as it was printed is therefore the same tick again.
class TimeFormat {
 public:
  // A rate of 0 means that it is unknown; then there are no seconds.
  TimeFormat(std::uint64_t startTicks, std::uint64_t ticksPerSecond);

  bool HasSeconds() const { return rate_ != 0; }

  // Seconds from the start to `ticks`; negative before it. Needs HasSeconds().
  void AppendSince(fmt::memory_buffer& out, std::uint64_t ticks) const;
  // The same to where there is room for `mostTimeBytes`; returns what is behind.
  char* PutSince(char* at, std::uint64_t ticks) const;
  std::string Since(std::uint64_t ticks) const;

  // `count` ticks as seconds. Needs HasSeconds().
  std::string Length(std::uint64_t count) const;

 private:
  char* PutLength(char* at, std::uint64_t count) const;
  std::uint64_t Rounded(std::uint64_t rest) const;

  std::uint64_t start_;
  std::uint64_t rate_;
  std::size_t decimals_;
  std::uint64_t scale_;          // 10 to the power decimals_
  std::uint64_t exact_ = 0;      // so much of it is a tick; 0: no whole number
  std::uint64_t mostQuick_ = 0;  // ticks that are divided in 64 bits
};

}  // namespace exporters
