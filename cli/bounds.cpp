#include "bounds.h"

#include <fmt/format.h>

#include "failure.h"
#include "text.h"

namespace cli {
namespace {

std::uint64_t TicksOf(const TimePoint& time, const TimeBase& base, const std::string& doing) {
  if (time.ticks) return *time.ticks;
  if (base.ticksPerSecond == 0) {
    throw Failure(doing + ": its tick rate is unknown, so --from and --to take only ticks");
  }
  const std::uint64_t distance = time.sinceStart.Ticks(base.ticksPerSecond);
  const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  return distance > most - base.start ? most : base.start + distance;
}

}  // namespace

std::optional<TimePoint> CheckedBound(const char* option, const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  if (const auto time = ParseTimePoint(*text)) return time;
  throw UsageError(fmt::format("{}: {} is not a time such as 1.5s, 250ms or 12us, nor a number of ticks",
                               option, Quoted(*text)));
}

Bounds BoundsIn(const TimeBase& base, const std::optional<TimePoint>& from,
                const std::optional<TimePoint>& to, const std::string& command, const std::string& doing) {
  Bounds bounds;
  if (from) bounds.from = TicksOf(*from, base, doing);
  if (to) bounds.to = TicksOf(*to, base, doing);
  if (bounds.from > bounds.to) throw UsageError(command + ": --from is later than --to");
  return bounds;
}

}  // namespace cli
