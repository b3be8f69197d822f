#include "suggest.h"

#include <gtest/gtest.h>

namespace cli {
namespace {

TEST(Suggestion, NamesTheNearestOnlyWhenNear) {
  struct Case {
    const char *a, *b;
    std::size_t distance;
  };
  constexpr Case cases[] = {
      {"", "", 0},         {"", "list", 4},          {"list", "list", 0}, {"List", "lIST", 0},
      {"lst", "list", 1},  {"lisst", "list", 1},     {"lisr", "list", 1}, {"lsit", "list", 1},
      {"ilst", "list", 1}, {"kitten", "sitting", 3}, {"ca", "abc", 3},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(EditDistance(c.a, c.b), c.distance) << c.a << ' ' << c.b;
    EXPECT_EQ(EditDistance(c.b, c.a), c.distance) << c.b << ' ' << c.a;
  }
  EXPECT_EQ(Suggestion("recrod", {"start", "record"}), "; did you mean 'record'?");
  // The effort grows with the square of the length.
  EXPECT_EQ(Suggestion(std::string(257, 'x'), {std::string(256, 'x')}), "");
  EXPECT_EQ(Suggestion(std::string(256, 'x'), {std::string(257, 'x')}), "");
}

}  // namespace
}  // namespace cli
