#include "timeformat.h"

#include <gtest/gtest.h>

#include "args.h"

namespace cli {
namespace {

TEST(TimeFormat, PrintsAsManyDecimalsAsTellTicksApart) {
  struct Case {
    std::uint64_t rate, count;
    const char* text;
  };
  constexpr Case cases[] = {
      {1, 7, "7.000000"},
      {1000, 1, "0.001000"},
      {1'000'000, 1'234'567, "1.234567"},
      {1'000'001, 1, "0.0000010"},
      {33'333'333, 1, "0.00000003"},
      {33'333'333, 33'333'332, "0.99999997"},
      {3, 2, "0.666667"},
      {3'000'000, 2'999'999, "0.9999997"},
      {1'000'000'000, UINT64_MAX, "18446744073.709551615"},
      // The fraction needs more than 64 bits on the way.
      {4'294'967'295, 4'294'967'294, "0.9999999998"},
      {10'000'000'000'000'000'000u, 1, "0.0000000000000000001"},
      // Rounds up to the next second.
      {UINT64_MAX, UINT64_MAX - 1, "0.9999999999999999999"},
      {UINT64_MAX, UINT64_MAX / 2, "0.5000000000000000000"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(TimeFormat(0, c.rate).Length(c.count), c.text);
  }
}

// What a list shows can be typed as --from or --to and selects that very entry.
TEST(TimeFormat, IsReadBackAsTheSameTick) {
  for (const std::uint64_t rate : {1ull, 3ull, 1000ull, 8'250'000ull, 33'333'333ull, 4'294'967'291ull}) {
    const TimeFormat time(0, rate);
    for (std::uint64_t tick = rate > 500 ? rate - 500 : 0; tick < rate + 500; ++tick) {
      ASSERT_EQ(ParseDuration(time.Since(tick) + "s")->Ticks(rate), tick) << "at " << rate;
    }
  }
}

}  // namespace
}  // namespace cli
