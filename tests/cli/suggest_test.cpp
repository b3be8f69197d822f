#include "suggest.h"

#include <gtest/gtest.h>

namespace cli {
namespace {

TEST(EditDistance, CountsTypingMistakes) {
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
}

TEST(Suggestion, NamesTheNearestOnlyWhenNear) {
  const std::vector<std::string> names{"start", "record", "info", "list", std::string(300, 'x')};
  EXPECT_EQ(Suggestion("lsit", names), "; did you mean 'list'?");
  EXPECT_EQ(Suggestion("recrod", names), "; did you mean 'record'?");
  EXPECT_EQ(Suggestion("export", names), "");
  EXPECT_EQ(Suggestion("", names), "");
  EXPECT_EQ(Suggestion(std::string(299, 'x'), names), "");
  EXPECT_EQ(Suggestion("\x1b", {"\x1b\x1b"}), "; did you mean '\\x1B\\x1B'?");
}

}  // namespace
}  // namespace cli
