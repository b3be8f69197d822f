// The ticks of the time axis, at round times.
#pragma once

#include <string>
#include <vector>

#include "window.h"

namespace timeline {

struct AxisTick {
  double x;
  std::string label;  // in the unit of the axis
};

// Seconds from `origin`, in as many decimals as their distance needs; with a rate of 0 the controller's
// ticks. Labels are at least `leastDistance` pixels apart, and farther where they are long.
std::vector<AxisTick> AxisOf(const Window& window, Ticks origin, std::uint64_t ticksPerSecond,
                             double leastDistance);

}  // namespace timeline
