// A duration is digits, an optional fraction and a unit; its digits are summed up as attoseconds.
#include "args.h"

#include <fmt/format.h>

#include <charconv>
#include <limits>

#include "failure.h"
#include "text.h"

namespace cli {
namespace {

struct Unit {
  std::string_view name;
  Wide attoseconds;
};

constexpr Unit units[] = {
    {"ns", Duration::perSecond / 1'000'000'000}, {"us", Duration::perSecond / 1'000'000},
    {"ms", Duration::perSecond / 1000},          {"s", Duration::perSecond},
    {"min", Duration::perSecond * 60},           {"h", Duration::perSecond * 3600},
};

constexpr Wide longest = Duration::perSecond << 62;

std::optional<Wide> UnitLength(std::string_view name) {
  for (const Unit& unit : units) {
    if (unit.name == name) return unit.attoseconds;
  }
  return std::nullopt;
}

std::string_view TakeDigits(std::string_view& text) {
  const std::size_t end = std::min(text.find_first_not_of("0123456789"), text.size());
  const std::string_view digits = text.substr(0, end);
  text.remove_prefix(end);
  return digits;
}

// What ".ddd" of a unit adds; what is below an attosecond is dropped.
Wide FractionOf(Wide unit, std::string_view digits) {
  Wide sum = 0;
  for (const char digit : digits) {
    // A unit is a power of ten times 1, 60 or 3600, so this stays exact down to the attosecond.
    sum += unit * static_cast<unsigned>(digit - '0') / 10;
    unit /= 10;
  }
  return sum;
}

}  // namespace

std::uint64_t Duration::Ticks(std::uint64_t ticksPerSecond) const {
  const Wide whole = attoseconds / perSecond * ticksPerSecond;
  const Wide rest = (attoseconds % perSecond * ticksPerSecond + perSecond / 2) / perSecond;
  constexpr Wide most = std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(std::min(whole + rest, most));
}

std::optional<Duration> ParseDuration(std::string_view text) {
  const std::string_view whole = TakeDigits(text);
  std::string_view fraction;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    fraction = TakeDigits(text);
    if (fraction.empty()) return std::nullopt;
  }
  const std::optional<Wide> unit = UnitLength(text);
  const std::optional<std::uint64_t> count = ParseNumber(whole);
  if (!unit || !count || *count > longest / *unit) return std::nullopt;
  return Duration{*count * *unit + FractionOf(*unit, fraction)};
}

std::optional<TimePoint> ParseTimePoint(std::string_view text) {
  if (const auto ticks = ParseNumber(text)) return TimePoint{ticks, {}};
  if (const auto duration = ParseDuration(text)) return TimePoint{std::nullopt, *duration};
  return std::nullopt;
}

std::optional<std::uint64_t> ParseNumber(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::chrono::nanoseconds WaitingTime(const char* option, const std::string& text,
                                     std::chrono::nanoseconds least) {
  constexpr Wide perNanosecond = Duration::perSecond / 1'000'000'000;
  constexpr Wide most = Duration::perSecond * 3600 * 24 * 36525;
  const auto duration = ParseDuration(text);
  if (!duration || duration->attoseconds > most) {
    throw UsageError(fmt::format("{}: {} is not a duration such as 10s or 250ms", option, Quoted(text)));
  }
  const auto wait =
      std::chrono::nanoseconds(static_cast<std::uint64_t>(duration->attoseconds / perNanosecond));
  if (wait < least) {
    throw UsageError(fmt::format("{}: {} is too short, the least is {} ms", option, Quoted(text),
                                 std::chrono::ceil<std::chrono::milliseconds>(least).count()));
  }
  return wait;
}

}  // namespace cli
