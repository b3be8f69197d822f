// Controller time, in nanoseconds since power-on, to timer ticks.
#pragma once

#include <cstdint>

namespace sim {

inline constexpr uint64_t nsPerSecond = 1'000'000'000;

struct TickClock {
  uint64_t ticksPerSecond;
  uint64_t startTicks;  // at power-on

  // Whole seconds apart, so that nothing overflows: a rate is at most 1e10.
  uint64_t At(uint64_t ns) const {
    return startTicks + ns / nsPerSecond * ticksPerSecond + ns % nsPerSecond * ticksPerSecond / nsPerSecond;
  }
};

}  // namespace sim
