#include "timeformat.h"

#include <limits>

#include "wide.h"

namespace exporters {
namespace {

constexpr int fewestDecimals = 6;
// 10^19 is the largest power of ten in 64 bits.
constexpr int mostDecimals = 19;

// `number` with leading zeros to `width` digits.
void AppendPadded(fmt::memory_buffer& out, std::uint64_t number, int width) {
  char digits[mostDecimals];
  for (int i = width; i-- > 0; number /= 10) digits[i] = static_cast<char>('0' + number % 10);
  out.append(digits, digits + width);
}

}  // namespace

void AppendNumber(fmt::memory_buffer& out, std::uint64_t number) {
  const fmt::format_int digits(number);
  out.append(digits.data(), digits.data() + digits.size());
}

TimeFormat::TimeFormat(std::uint64_t startTicks, std::uint64_t ticksPerSecond)
    : start_(startTicks), rate_(ticksPerSecond), decimals_(fewestDecimals), scale_(1'000'000) {
  for (; scale_ < rate_ && decimals_ < mostDecimals; ++decimals_) scale_ *= 10;
}

void TimeFormat::AppendLength(fmt::memory_buffer& out, std::uint64_t count) const {
  std::uint64_t seconds = count / rate_;
  const std::uint64_t rest = count % rate_;
  const std::uint64_t half = rate_ / 2;
  std::uint64_t fraction = 0;
  // Division in 128 bits costs ten times as much, and common rates do without.
  if (rest <= (std::numeric_limits<std::uint64_t>::max() - half) / scale_) {
    fraction = (rest * scale_ + half) / rate_;
  } else {
    fraction = static_cast<std::uint64_t>((static_cast<Wide>(rest) * scale_ + half) / rate_);
  }
  if (fraction == scale_) {
    ++seconds;
    fraction = 0;
  }
  AppendNumber(out, seconds);
  out.push_back('.');
  AppendPadded(out, fraction, decimals_);
}

void TimeFormat::AppendSince(fmt::memory_buffer& out, std::uint64_t ticks) const {
  if (ticks >= start_) return AppendLength(out, ticks - start_);
  out.push_back('-');
  AppendLength(out, start_ - ticks);
}

std::string TimeFormat::Since(std::uint64_t ticks) const {
  fmt::memory_buffer out;
  AppendSince(out, ticks);
  return fmt::to_string(out);
}

std::string TimeFormat::Length(std::uint64_t count) const {
  fmt::memory_buffer out;
  AppendLength(out, count);
  return fmt::to_string(out);
}

}  // namespace exporters
