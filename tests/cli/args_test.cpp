#include "args.h"

#include <gtest/gtest.h>

#include "failure.h"

namespace cli {
namespace {

constexpr std::uint64_t most = UINT64_MAX;

TEST(Duration, IsTheNearestTickWithoutRounding) {
  struct Case {
    const char* text;
    std::uint64_t rate;
    std::uint64_t ticks;
  };
  constexpr Case cases[] = {
      {"1.5s", 1'000'000, 1'500'000},
      {"250ms", 33'333'333, 8'333'333},  // 8333333.25
      {"12us", 1'000'000, 12},
      {"3ns", 1'000'000'000, 3},
      {"3ns", 100'000'000, 0},  // 0.3
      {"5ns", 100'000'000, 1},  // 0.5
      {"2min", 1000, 120'000},
      {"1.5h", 1, 5400},
      {"0s", 1'000'000, 0},
      {"0.000000001s", 1'000'000'000, 1},
      // In double precision these would be 1 more or less.
      {"9007199254.740993s", 1'000'000, 9'007'199'254'740'993},
      {"4611686018427387904s", 3, 13'835'058'055'282'163'712u},
      {"4611686018427387904s", 1'000'000, most},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const auto duration = ParseDuration(c.text);
    ASSERT_TRUE(duration);
    EXPECT_EQ(duration->Ticks(c.rate), c.ticks);
  }
}

TEST(Duration, RefusesWhatIsNone) {
  for (const char* text : {"",
                           "s",
                           "1",
                           "1.5",
                           ".5s",
                           "1.s",
                           "1,5s",
                           "-1s",
                           "+1s",
                           " 1s",
                           "1 s",
                           "1s ",
                           "1S",
                           "1m",
                           "1.5.5s",
                           "1e3s",
                           "0x10s",
                           "4611686018427387905s",
                           "99999999999999999999s",
                           "76861433640456466min"}) {
    EXPECT_FALSE(ParseDuration(text)) << text;
  }
}

TEST(TimePoint, IsTicksWithoutAUnit) {
  const auto ticks = ParseTimePoint("18446744073709551615");
  ASSERT_TRUE(ticks);
  EXPECT_EQ(ticks->ticks, most);
  const auto distance = ParseTimePoint("2ms");
  ASSERT_TRUE(distance);
  EXPECT_FALSE(distance->ticks);
  EXPECT_EQ(distance->sinceStart.Ticks(1000), 2u);
  for (const char* text : {"18446744073709551616", "-1", "1.5", "abc"})
    EXPECT_FALSE(ParseTimePoint(text)) << text;
}

TEST(WaitingTime, HasBounds) {
  using namespace std::chrono_literals;
  EXPECT_EQ(WaitingTime("--for", "10s", 1ms), 10s);
  EXPECT_EQ(WaitingTime("--for", "1ms", 1ms), 1ms);
  for (const char* text : {"999us", "0s", "10", "876601h"}) {
    EXPECT_THROW(WaitingTime("--for", text, 1ms), UsageError) << text;
  }
}

}  // namespace
}  // namespace cli
