// PNGs, where the command was built to draw them.
#include <gtest/gtest.h>

#include "cli/program.h"

namespace {

TEST(Png, IsAsWideAsAskedFor) {
  const TempFolder folder;
  folder.Write("log", TaskFile({.startTime = 0, .stopTime = 100}, {{"T", 1, 0, {{2, 1, 50}}}}));
  // What fontconfig keeps to its end is not ours to free.
  folder.Write("leaks", "leak:libfontconfig\n");
  const std::string program = "LSAN_OPTIONS=suppressions=leaks tasklog plot log --width 400 -o p.png";
  const Result result = Program(folder, {"sh", "-c", program}).Wait();
  EXPECT_EQ(result.exitCode, 0) << result.err;
  const std::string png = folder.Read("p.png");
  ASSERT_GT(png.size(), 24u);
  EXPECT_EQ(png.substr(1, 3), "PNG");
  EXPECT_EQ(png.substr(16, 4), std::string("\0\0\x01\x90", 4));  // 400, the highest byte first
}

}  // namespace
