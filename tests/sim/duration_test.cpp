#include "duration.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

TEST(Duration, IsReadExactly) {
  struct Case {
    const char* text;
    std::optional<uint64_t> ns;
  };
  constexpr Case cases[] = {
      {"0ns", 0},
      {"250us", 250'000},
      {"1.5ms", 1'500'000},
      {"0.000000001s", 1},
      {"86400s", 86'400'000'000'000},
      {"2 s", 2'000'000'000},
      {"1.50ns", std::nullopt},
      {"0.0000000001s", std::nullopt},
      {"86400.1s", std::nullopt},
      {"99999999999999999999s", std::nullopt},
      {"1.2.3s", std::nullopt},
      {".5s", std::nullopt},
      {"5.s", std::nullopt},
      {"-1s", std::nullopt},
      {"5", std::nullopt},
      {"5min", std::nullopt},
      {"s", std::nullopt},
      {"", std::nullopt},
  };
  for (const Case& c : cases) EXPECT_EQ(ParseDuration(c.text), c.ns) << c.text;
}

}  // namespace
}  // namespace sim
