#include "args.h"

#include <gtest/gtest.h>

namespace cli {
namespace {

TEST(Duration, IsTheNearestTickWithoutRounding) {
  struct Case {
    const char* text;
    std::uint64_t rate;
    std::uint64_t ticks;
  };
  constexpr Case cases[] = {
      {"1.5s", 1'000'000, 1'500'000},
      {"250ms", 33'333'333, 8'333'333},  // 8333333.25
      {"3ns", 100'000'000, 0},           // 0.3
      {"5ns", 100'000'000, 1},           // 0.5
      {"2min", 1000, 120'000},
      {"1.5h", 1, 5400},
      {"0s", 1'000'000, 0},
      {"0.000000001s", 1'000'000'000, 1},
      // In double precision these would be 1 more or less.
      {"9007199254.740993s", 1'000'000, 9'007'199'254'740'993},
      {"4611686018427387904s", 3, 13'835'058'055'282'163'712u},
      {"4611686018427387904s", 1'000'000, UINT64_MAX},
  };
  for (const Case& c : cases) {
    const auto duration = ParseDuration(c.text);
    ASSERT_TRUE(duration) << c.text;
    EXPECT_EQ(duration->Ticks(c.rate), c.ticks) << c.text;
  }
}

TEST(Duration, RefusesWhatIsNone) {
  const char* const texts[] = {"",
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
                               "1e3s",
                               "0x10s",
                               "1.5.5s",
                               "4611686018427387905s",
                               "99999999999999999999s",
                               "76861433640456466min"};
  for (const char* text : texts) EXPECT_FALSE(ParseDuration(text)) << text;
}

}  // namespace
}  // namespace cli
