#include "duration.h"

namespace sim {
namespace {

constexpr uint64_t longestNs = uint64_t{86'400} * 1'000'000'000;

std::optional<uint64_t> UnitNs(std::string_view unit) {
  if (unit == "ns") return 1;
  if (unit == "us") return 1'000;
  if (unit == "ms") return 1'000'000;
  if (unit == "s") return 1'000'000'000;
  return std::nullopt;
}

// The value of up to 14 digits, which is more than a day of nanoseconds.
std::optional<uint64_t> ParseDigits(std::string_view digits) {
  if (digits.empty() || digits.size() > 14) return std::nullopt;
  uint64_t value = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + static_cast<uint64_t>(c - '0');
  }
  return value;
}

}  // namespace

// In integers, so that no duration depends on a rounding of floating-point numbers.
std::optional<uint64_t> ParseDuration(std::string_view text) {
  const size_t numberEnd = text.find_first_not_of("0123456789.");
  if (numberEnd == std::string_view::npos) return std::nullopt;
  const size_t unitAt = text[numberEnd] == ' ' ? numberEnd + 1 : numberEnd;
  const auto unitNs = UnitNs(text.substr(unitAt));
  const std::string_view number = text.substr(0, numberEnd);
  const size_t point = number.find('.');
  const auto whole = ParseDigits(number.substr(0, point));
  if (!unitNs || !whole || *whole > longestNs / *unitNs) return std::nullopt;

  uint64_t valueNs = *whole * *unitNs;
  if (point == std::string_view::npos) return valueNs;
  const std::string_view fraction = number.substr(point + 1);
  if (!ParseDigits(fraction)) return std::nullopt;
  uint64_t placeNs = *unitNs;
  for (const char c : fraction) {
    placeNs /= 10;
    if (placeNs == 0 && c != '0') return std::nullopt;
    valueNs += static_cast<uint64_t>(c - '0') * placeNs;
  }
  return valueNs <= longestNs ? std::optional(valueNs) : std::nullopt;
}

}  // namespace sim
