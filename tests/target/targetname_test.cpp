// The kernel suffix of target names.
#include "target/targetname.h"

#include <gtest/gtest.h>

namespace {

TEST(TargetName, FindsTheKernelSuffix) {
  constexpr auto none = std::string_view::npos;
  const struct {
    std::string target;
    std::size_t position;
    u32 kernel;
  } cases[] = {
      {"ctl/@2", 3, 2},
      {"ctl\\@12", 3, 12},
      {"ctl/@18", 3, 18},
      {"ctl/@10", none, 0},
      {"ctl/@9", none, 0},
      {"ctl/@0", none, 0},
      {"ctl/@92", none, 0},
      {"ctl/@", 3, 0},
      {"ctl/@2/@3", 6, 3},
      {"ctl/@2 ", none, 0},
      {"ctl@2", none, 0},
      {"ctl/2", none, 0},
      {"@3", none, 0},
      {"/@1", 0, 1},
      {"/@", 0, 0},
      {"ctl", none, 0},
      {"12345678", none, 0},
      {"1", none, 0},
      {"", none, 0},
      {"ctl/@4294967288", none, 0},
      {"ctl/@88888888888", 3, 2989542968},  // modulo 2^32
      {"ctl/@" + std::string(5000, '1') + "0", none, 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FindKernelSuffix(c.target), c.position) << c.target;
    EXPECT_EQ(KernelOfTarget(c.target), c.kernel) << c.target;
  }
}

TEST(TargetName, ReplacesTheKernelSuffix) {
  const struct {
    const char* target;
    i32 kernel;
    const char* expected;
  } cases[] = {
      {"ctl/@2", 3, "ctl/@3"},
      {"ctl\\@5", -1, "ctl"},
      {"ctl/@2", 0, "ctl"},
      {"ctl", 0, "ctl"},
      {"ctl/@9", 2, "ctl/@9/@2"},
      {"ctl/@9", -1, "ctl/@9"},
      {"/@1", -1, ""},
      {"@1", -1, "@1"},
      {"ctl/@", -1, "ctl"},
      {"ctl/@2/@3", -1, "ctl/@2"},
      {"ctl", -7, "ctl"},
      {"ctl", INT32_MAX, "ctl/@2147483647"},
      {"", 1, "/@1"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(WorkingTargetName(c.target, c.kernel), c.expected) << c.target << ' ' << c.kernel;
  }
}

}  // namespace
