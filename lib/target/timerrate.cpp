// The timer rate of a controller.
#include <cmath>
#include <cstring>

#include "model/model.h"
#include "target/access.h"
#include "target/target.h"

namespace {

struct Clock {
  const char* variable;
  u32 divisor;
};

// The timer of a PPC603 counts every fourth cycle of the bus. An unreadable processor name counts as any
// other processor.
Clock ClockOf(const std::string& target) {
  char cpu[11] = {};  // one byte more than the controller may fill, so that the text always ends
  if (GetVariable(target.c_str(), "Target.Cpu", cpu, 10) == TL_OK && std::strcmp(cpu, "PPC603") == 0)
    return {"Target.BusClock", 4};
  return {"Target.CpuClock", 1};
}

// The ticks per second of a tick length in nanoseconds; 0 (unknown) where the length gives no rate.
u64 RateOfResolution(double nanoseconds) {
  constexpr double limit = 18446744073709551616.0;  // 2^64
  const double rate = 1e9 / nanoseconds;
  return std::isfinite(nanoseconds) && rate > 0 && rate < limit ? static_cast<u64>(rate) : 0;
}

}  // namespace

u32 _STLTaskLog::FetchTicksPerSecond(const std::string& target) {
  constexpr u32 defaultClockHz = 33'000'000;
  double value = 0.0;
  u32 status = GetVariable(target.c_str(), "Target.Mpu.Resolution", &value, 0);
  if (status == TL_OK) ticksPerSecond = RateOfResolution(value);
  if (status != noSuchVariable) return status;

  const Clock clock = ClockOf(target);
  status = GetVariable(target.c_str(), clock.variable, &value, 0);
  if (status != TL_OK && status != noSuchVariable) return status;
  const u32 clockHz = status == TL_OK ? TruncateToU32(value) : defaultClockHz;
  ticksPerSecond = clockHz / clock.divisor;
  return TL_OK;
}
