// A period of a log, as --from and --to give it.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <tasklog/tasklog.hpp>

#include "args.h"

namespace cli {

// The value of --from or --to. Throws UsageError.
std::optional<TimePoint> CheckedBound(const char* option, const std::optional<std::string>& text);

struct Bounds {
  std::uint64_t from = 0;  // ticks, both included
  std::uint64_t to = std::numeric_limits<std::uint64_t>::max();
};

// What lengths of time count from, and by.
struct TimeBase {
  std::uint64_t start = 0;  // ticks
  std::uint64_t ticksPerSecond = 0;

  TimeBase(std::uint64_t startTicks, std::uint64_t rate) : start(startTicks), ticksPerSecond(rate) {}
  TimeBase(const tasklog::Log& log) : TimeBase(log.StartTime(), log.TicksPerSecond()) {}
};

// The ticks meant in this log. `doing` begins the message of a Failure; `command` that of a UsageError.
Bounds BoundsIn(const TimeBase& base, const std::optional<TimePoint>& from,
                const std::optional<TimePoint>& to, const std::string& command, const std::string& doing);

}  // namespace cli
