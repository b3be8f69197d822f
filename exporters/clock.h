// Ticks of all lanes of an export as nanoseconds of one clock, whole ones, rounded down.
#pragma once

#include <cstdint>

#include "analysis/lane.h"

namespace exporters {

class Clock {
 public:
  // `most` nanoseconds are the latest time that the format holds.
  explicit Clock(std::uint64_t most) : mostSeconds_(most / perSecond - 1) {}

  // What follows is about this lane. The first one decides where the clock begins: at tick 0, or where its
  // times would not fit, a day before it. Throws std::runtime_error for a lane that does not fit.
  void Enter(const analysis::Lane& lane, const std::string& name);

  std::uint64_t Of(analysis::Ticks ticks) const {
    // Common rates need no division.
    return wholeNanoseconds_ != 0 ? (ticks - baseTicks_) * wholeNanoseconds_ : Divided(ticks - baseTicks_);
  }
  std::uint64_t BaseTicks() const { return baseTicks_; }  // those at nanosecond 0

 private:
  static constexpr std::uint64_t perSecond = 1'000'000'000;

  std::uint64_t Divided(std::uint64_t since) const;

  std::uint64_t mostSeconds_;
  std::uint64_t baseSeconds_ = 0;
  bool hasBase_ = false;
  // Of the lane at hand. Where the rate is unknown, a tick is shown as a nanosecond.
  std::uint64_t rate_ = perSecond;
  std::uint64_t wholeNanoseconds_ = 1;  // of a tick; 0: it is no whole number of them
  std::uint64_t baseTicks_ = 0;
};

}  // namespace exporters
