#include "clock.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "text.h"
#include "wide.h"

namespace exporters {

void Clock::Enter(const analysis::Lane& lane, const std::string& name) {
  constexpr std::uint64_t day = 24 * 3600;
  rate_ = lane.TicksPerSecond() == 0 ? perSecond : lane.TicksPerSecond();
  wholeNanoseconds_ = perSecond % rate_ == 0 ? perSecond / rate_ : 0;
  const std::uint64_t first = lane.StartTime() / rate_;
  const std::uint64_t last = lane.StopTime() / rate_;
  if (!hasBase_ && last > mostSeconds_) baseSeconds_ = first - std::min(first, day);
  hasBase_ = true;
  if (first < baseSeconds_ || last - baseSeconds_ > mostSeconds_)
    throw std::runtime_error("'" + name + "'" +
                             ": its times do not fit into the nanoseconds of this format; export a part with "
                             "--from and --to, or the lanes one by one");
  baseTicks_ = baseSeconds_ * rate_;
}

std::uint64_t Clock::Divided(std::uint64_t since) const {
  const std::uint64_t rest = since % rate_;
  const std::uint64_t seconds = since / rate_ * perSecond;
  // Division in 128 bits costs ten times as much, and common rates do without.
  if (rate_ <= std::numeric_limits<std::uint64_t>::max() / perSecond)
    return seconds + rest * perSecond / rate_;
  return seconds + static_cast<std::uint64_t>(Wide{rest} * perSecond / rate_);
}

}  // namespace exporters
