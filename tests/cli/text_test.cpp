#include "text.h"

#include <gtest/gtest.h>

namespace cli {
namespace {

using namespace std::string_literals;

TEST(Text, LetsNothingOutThatSteersATerminalOrBreaksAFormat) {
  struct Case {
    std::string bytes, safe, json;
  };
  const Case cases[] = {
      {"Ctrl", "Ctrl", R"("Ctrl")"},
      {"", "", R"("")"},
      {"a\\b", R"(a\\b)", R"("a\\b")"},
      {"say \"hi\"", R"(say "hi")", R"("say \"hi\"")"},
      {"a\nb\r\tc", R"(a\x0Ab\x0D\x09c)", R"("a\u000ab\u000d\u0009c")"},
      {"\x1b[31mred", R"(\x1B[31mred)", R"("\u001b[31mred")"},
      {"\x7f"s + "\0"s, R"(\x7F\x00)", R"("\u007f\u0000")"},
      {"Gr\xc3\xb6\xc3\x9fte", "Gr\xc3\xb6\xc3\x9fte", "\"Gr\xc3\xb6\xc3\x9fte\""},
      {"Gr\xf6\xdfte", R"(Gr\xF6\xDFte)", R"("Gr\u00f6\u00dfte")"},                  // Latin-1
      {"\xc2\x9bm", R"(\xC2\x9Bm)", R"("\u009bm")"},                                 // CSI in one character
      {"\xe2\x80\xaex", R"(\xE2\x80\xAEx)", R"("\u202ex")"},                         // turns the text round
      {"\xc0\xaf", R"(\xC0\xAF)", R"("\u00c0\u00af")"},                              // overlong
      {"\xe0\x80\xaf", R"(\xE0\x80\xAF)", R"("\u00e0\u0080\u00af")"},                // overlong
      {"\xf0\x8f\xbf\xbf", R"(\xF0\x8F\xBF\xBF)", R"("\u00f0\u008f\u00bf\u00bf")"},  // overlong
      {"\xed\xa0\x80", R"(\xED\xA0\x80)", R"("\u00ed\u00a0\u0080")"},                // surrogate
      {"\xf4\x90\x80\x80", R"(\xF4\x90\x80\x80)", R"("\u00f4\u0090\u0080\u0080")"},  // beyond U+10FFFF
      {"cut \xe2\x82", R"(cut \xE2\x82)", R"("cut \u00e2\u0082")"},                  // ends early
      {"\xf0\x9f\x94\xa7", "\xf0\x9f\x94\xa7", "\"\xf0\x9f\x94\xa7\""},              // four bytes
  };
  for (const Case& c : cases) {
    EXPECT_EQ(SafeText(c.bytes), c.safe);
    EXPECT_EQ(JsonString(c.bytes), c.json);
  }
  EXPECT_EQ(CsvField("a,\n"), R"("a,\x0A")");
  EXPECT_EQ(CsvField("say \"hi\""), R"("say ""hi""")");
  EXPECT_EQ(DisplayWidth("Gr\xc3\xb6\xc3\x9fte"), 6u);
}

}  // namespace
}  // namespace cli
