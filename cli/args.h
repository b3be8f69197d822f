// Durations, times and numbers as they are typed on the command line, read without rounding.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "wide.h"

namespace cli {

// A length of time, whole attoseconds: exact for all that can be typed.
struct Duration {
  static constexpr Wide perSecond = 1'000'000'000'000'000'000;

  Wide attoseconds = 0;

  // The nearest whole number of ticks; UINT64_MAX when there is none that large.
  std::uint64_t Ticks(std::uint64_t ticksPerSecond) const;
};

// A point of time in a log: ticks as the target counts them, or a distance from the start of the log.
struct TimePoint {
  std::optional<std::uint64_t> ticks;
  Duration sinceStart;  // meant when `ticks` is empty
};

// "1.5s", "250ms", "12us", "3ns", "2min", "1h"; empty for anything else, and beyond 2^62 seconds.
std::optional<Duration> ParseDuration(std::string_view text);

// A duration, or digits alone: ticks.
std::optional<TimePoint> ParseTimePoint(std::string_view text);

// "20%", "0.5 %": as a share, 0.2 and 0.005.
std::optional<double> ParsePercent(std::string_view text);

// Digits alone, no sign, up to 2^64 - 1.
std::optional<std::uint64_t> ParseNumber(std::string_view text);

// The value of an option that waits: at least `least`, at most a hundred years. Throws UsageError.
std::chrono::nanoseconds WaitingTime(const char* option, const std::string& text,
                                     std::chrono::nanoseconds least);

}  // namespace cli
