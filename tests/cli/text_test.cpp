#include "text.h"

#include <gtest/gtest.h>

namespace cli {
namespace {

using namespace std::string_literals;

TEST(Text, LetsNothingOutThatSteersATerminalOrBreaksAFormat) {
  struct Case {
    std::string bytes, safe, csv, json;
  };
  const Case cases[] = {
      {"Ctrl", "Ctrl", "Ctrl", R"("Ctrl")"},
      {"", "", "", R"("")"},
      {"a\\b", R"(a\\b)", R"(a\\b)", R"("a\\b")"},
      {"a,b", "a,b", R"("a,b")", R"("a,b")"},
      {"say \"hi\"", "say \"hi\"", R"("say ""hi""")", R"("say \"hi\"")"},
      {"a\nb\r\tc", R"(a\x0Ab\x0D\x09c)", R"(a\x0Ab\x0D\x09c)", R"("a\u000ab\u000d\u0009c")"},
      {"\x1b[31mred", R"(\x1B[31mred)", R"(\x1B[31mred)", R"("\u001b[31mred")"},
      {"\x7f"s + "\0"s, R"(\x7F\x00)", R"(\x7F\x00)", R"("\u007f\u0000")"},
      {"Gr\xc3\xb6\xc3\x9f"
       "e",
       "Gr\xc3\xb6\xc3\x9f"
       "e",
       "Gr\xc3\xb6\xc3\x9f"
       "e",
       "\"Gr\xc3\xb6\xc3\x9f"
       "e\""},
      {"Gr\xf6\xdf"
       "e",
       R"(Gr\xF6\xDFe)", R"(Gr\xF6\xDFe)", R"("Gr\u00f6\u00dfe")"},  // Latin-1
      {"\xc2\x9b"
       "31m",
       R"(\xC2\x9B31m)", R"(\xC2\x9B31m)", R"("\u009b31m")"},  // CSI in one character
      {"\xe2\x80\xae"
       "x",
       R"(\xE2\x80\xAEx)", R"(\xE2\x80\xAEx)", R"("\u202ex")"},         // turns the text round
      {"\xc0\xaf", R"(\xC0\xAF)", R"(\xC0\xAF)", R"("\u00c0\u00af")"},  // overlong
      {"\xe0\x80\xaf", R"(\xE0\x80\xAF)", R"(\xE0\x80\xAF)", R"("\u00e0\u0080\u00af")"},  // overlong
      {"\xed\xa0\x80", R"(\xED\xA0\x80)", R"(\xED\xA0\x80)", R"("\u00ed\u00a0\u0080")"},  // surrogate
      {"\xf4\x90\x80\x80", R"(\xF4\x90\x80\x80)", R"(\xF4\x90\x80\x80)", R"("\u00f4\u0090\u0080\u0080")"},
      {"cut \xe2\x82", R"(cut \xE2\x82)", R"(cut \xE2\x82)", R"("cut \u00e2\u0082")"},       // ends early
      {"\xf0\x9f\x94\xa7", "\xf0\x9f\x94\xa7", "\xf0\x9f\x94\xa7", "\"\xf0\x9f\x94\xa7\""},  // four bytes
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.safe);
    EXPECT_EQ(SafeText(c.bytes), c.safe);
    EXPECT_EQ(CsvField(c.bytes), c.csv);
    EXPECT_EQ(JsonString(c.bytes), c.json);
  }
}

TEST(Text, IsAsWideAsItsCharacters) {
  EXPECT_EQ(DisplayWidth(""), 0u);
  EXPECT_EQ(DisplayWidth("Ctrl"), 4u);
  EXPECT_EQ(DisplayWidth("Gr\xc3\xb6\xc3\x9f"
                         "e"),
            5u);
}

}  // namespace
}  // namespace cli
