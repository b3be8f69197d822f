#include "axis.h"

#include <cmath>

namespace timeline {
namespace {

// A distance of labels: 1, 2 or 5 times a power of ten; whole units, or an even part of one.
struct Step {
  std::uint64_t units = 1;    // or
  std::uint64_t perUnit = 1;  // so many to a unit
  int decimals = 0;
  double Units() const { return static_cast<double>(units) / static_cast<double>(perUnit); }
};

constexpr int mostDecimals = 18;
constexpr double pixelsOfDigit = 7;

// A place of the axis: whole units, and parts of one. Below 0 the units wrap round.
struct Place {
  std::uint64_t units;
  std::uint64_t parts;
};

class Axis {
 public:
  Axis(const Window& window, Ticks origin, std::uint64_t ticksPerUnit)
      : window_(window), ticksPerUnit_(ticksPerUnit), beginsNegative_(window.From() < origin) {
    const Ticks distance = beginsNegative_ ? origin - window.From() : window.From() - origin;
    units_ = distance / ticksPerUnit;
    rest_ = distance % ticksPerUnit;
    if (!beginsNegative_) return;
    units_ = 0 - units_ - (rest_ > 0);
    rest_ = rest_ > 0 ? ticksPerUnit - rest_ : 0;
  }

  std::vector<AxisTick> Make(double leastDistance) const {
    const Step step = StepFor(leastDistance);
    std::vector<AxisTick> ticks;
    const double distance = PixelsOf(step);
    Place place = First(step);
    const auto mostTicks = static_cast<std::size_t>(window_.Width() / distance) + 2;
    for (double x = XOf(place, step); x <= window_.Width() && ticks.size() < mostTicks; x += distance) {
      ticks.push_back({x, Label(place, step)});
      place = Next(place, step);
    }
    return ticks;
  }

 private:
  double PixelsOf(const Step& step) const {
    return step.Units() * static_cast<double>(ticksPerUnit_) * window_.Width() /
           static_cast<double>(window_.Length());
  }

  // Labels that lie nearer than a tick would tell of nothing.
  Step StepFor(double leastDistance) const {
    for (int exponent = -mostDecimals; exponent <= mostDecimals; ++exponent) {
      for (const std::uint64_t digit : {1u, 2u, 5u}) {
        Step step;
        for (int i = 0; i < exponent; ++i) step.units *= 10;
        for (int i = exponent; i < 0; ++i) step.perUnit *= 10;
        step.decimals = exponent < 0 ? -exponent : 0;
        exponent < 0 ? step.perUnit /= digit : step.units *= digit;
        const bool tellsTicksApart = step.Units() * static_cast<double>(ticksPerUnit_) >= 1;
        const double needed = std::max(leastDistance, pixelsOfDigit * LabelLength(step) + leastDistance / 4);
        if (tellsTicksApart && PixelsOf(step) >= needed) return step;
      }
    }
    return {10'000'000'000'000'000'000u, 1, 0};
  }

  int LabelLength(const Step& step) const {
    const Place end{units_ + static_cast<std::uint64_t>(static_cast<double>(window_.Length()) /
                                                        static_cast<double>(ticksPerUnit_)),
                    0};
    return static_cast<int>(std::max(Label(end, step).size(), Label({units_, 0}, step).size()));
  }

  // The first place that is not left of the window.
  Place First(const Step& step) const {
    if (step.perUnit > 1) {
      const double parts =
          static_cast<double>(rest_) / static_cast<double>(ticksPerUnit_) * static_cast<double>(step.perUnit);
      return Normal({units_, static_cast<std::uint64_t>(std::ceil(parts - 1e-9))}, step);
    }
    if (beginsNegative_) return {0 - (0 - units_ - (rest_ > 0)) / step.units * step.units, 0};
    const std::uint64_t above = units_ % step.units;
    if (above == 0 && rest_ == 0) return {units_, 0};
    return {units_ - above + step.units, 0};
  }

  static Place Next(Place place, const Step& step) {
    if (step.perUnit == 1) return {place.units + step.units, 0};
    return Normal({place.units, place.parts + 1}, step);
  }
  static Place Normal(Place place, const Step& step) {
    return place.parts < step.perUnit ? place : Place{place.units + 1, place.parts - step.perUnit};
  }

  double XOf(const Place& place, const Step& step) const {
    const double units = static_cast<double>(place.units - units_) +
                         static_cast<double>(place.parts) / static_cast<double>(step.perUnit);
    const double ticks = units * static_cast<double>(ticksPerUnit_) - static_cast<double>(rest_);
    return std::max(0.0, ticks * window_.Width() / static_cast<double>(window_.Length()));
  }

  std::string Label(const Place& place, const Step& step) const {
    const bool isNegative = beginsNegative_ && place.units > UINT64_MAX / 2;
    std::uint64_t units = isNegative ? 0 - place.units : place.units;
    std::uint64_t parts = place.parts;
    if (isNegative && parts > 0) {
      --units;
      parts = step.perUnit - parts;
    }
    std::string label = (isNegative ? "-" : "") + std::to_string(units);
    if (step.decimals == 0) return label;
    std::uint64_t scale = 1;
    for (int i = 0; i < step.decimals; ++i) scale *= 10;
    const std::string digits = std::to_string(parts * (scale / step.perUnit));
    return label + '.' + std::string(static_cast<std::size_t>(step.decimals) - digits.size(), '0') + digits;
  }

  const Window& window_;
  std::uint64_t ticksPerUnit_;
  bool beginsNegative_;
  std::uint64_t units_;  // the begin of the window
  std::uint64_t rest_;   // ticks
};

}  // namespace

std::vector<AxisTick> AxisOf(const Window& window, Ticks origin, std::uint64_t ticksPerSecond,
                             double leastDistance) {
  return Axis(window, ticksPerSecond == 0 ? 0 : origin, std::max<std::uint64_t>(ticksPerSecond, 1))
      .Make(leastDistance);
}

}  // namespace timeline
