#include "progressbar.h"

#include <gtest/gtest.h>

namespace cli {
namespace {

TEST(ProgressLine, FitsTheTerminal) {
  EXPECT_EQ(ProgressLine("reading demo", 50, 80, false),
            "reading demo [####################--------------------]  50 %");
  EXPECT_EQ(ProgressLine("reading demo", 50, 32, false), "reading demo [#####-----]  50 %");
  EXPECT_EQ(ProgressLine("reading demo", 50, 20, false), " 50 %");
  EXPECT_EQ(ProgressLine("r", 0, 15, false), "r [----]   0 %");
  EXPECT_EQ(ProgressLine("r", 100, 15, false), "r [####] 100 %");
  EXPECT_EQ(ProgressLine("r", 50, 15, true), "r [\x1b[32m##\x1b[0m--]  50 %");
}

}  // namespace
}  // namespace cli
