#include "timeformat.h"

#include <limits>

#include "digits.h"
#include "wide.h"

namespace exporters {
namespace {

constexpr std::size_t fewestDecimals = 6;
// 10^19 is the largest power of ten in 64 bits.
constexpr std::size_t mostDecimals = 19;

// `put` writes behind `out`, at most `most` bytes.
template <class Put>
void AppendAtMost(fmt::memory_buffer& out, std::size_t most, Put put) {
  const std::size_t size = out.size();
  out.resize(size + most);
  out.resize(static_cast<std::size_t>(put(out.data() + size) - out.data()));
}

}  // namespace

void AppendNumber(fmt::memory_buffer& out, std::uint64_t number) {
  AppendAtMost(out, mostDigits, [number](char* at) { return PutNumber(at, number); });
}

TimeFormat::TimeFormat(std::uint64_t startTicks, std::uint64_t ticksPerSecond)
    : start_(startTicks), rate_(ticksPerSecond), decimals_(fewestDecimals), scale_(1'000'000) {
  for (; scale_ < rate_ && decimals_ < mostDecimals; ++decimals_) scale_ *= 10;
  if (rate_ == 0) return;
  if (scale_ % rate_ == 0) exact_ = scale_ / rate_;
  mostQuick_ = (std::numeric_limits<std::uint64_t>::max() - rate_ / 2) / scale_;
}

// Less than a second in units of the last decimal. Division in 128 bits costs ten times as much as one in 64,
// and common rates do without either.
std::uint64_t TimeFormat::Rounded(std::uint64_t rest) const {
  if (exact_ != 0) return rest * exact_;
  const std::uint64_t half = rate_ / 2;
  if (rest <= mostQuick_) return (rest * scale_ + half) / rate_;
  return static_cast<std::uint64_t>((static_cast<Wide>(rest) * scale_ + half) / rate_);
}

char* TimeFormat::PutLength(char* at, std::uint64_t count) const {
  std::uint64_t seconds = count / rate_;
  std::uint64_t fraction = Rounded(count % rate_);
  if (fraction == scale_) {
    ++seconds;
    fraction = 0;
  }
  at = PutNumber(at, seconds);
  *at++ = '.';
  return PutPadded(at, fraction, decimals_);
}

char* TimeFormat::PutSince(char* at, std::uint64_t ticks) const {
  if (ticks >= start_) return PutLength(at, ticks - start_);
  *at++ = '-';
  return PutLength(at, start_ - ticks);
}

void TimeFormat::AppendSince(fmt::memory_buffer& out, std::uint64_t ticks) const {
  AppendAtMost(out, mostTimeBytes, [&](char* at) { return PutSince(at, ticks); });
}

std::string TimeFormat::Since(std::uint64_t ticks) const {
  char text[mostTimeBytes];
  return {text, PutSince(text, ticks)};
}

std::string TimeFormat::Length(std::uint64_t count) const {
  char text[mostTimeBytes];
  return {text, PutLength(text, count)};
}

}  // namespace exporters
