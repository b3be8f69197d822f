// The kernel suffix of target names.
#include <gtest/gtest.h>

#include "target/target.h"

namespace {

TEST(TargetName, LosesItsKernelSuffixForAnother) {
  const struct {
    std::string target;
    u32 kernel;
    std::string without;
  } cases[] = {
      {"ctl/@2", 2, "ctl"},
      {"ctl\\@12", 12, "ctl"},
      {"ctl/@10", 0, "ctl/@10"},
      {"ctl/@9", 0, "ctl/@9"},
      {"ctl/@", 0, "ctl"},
      {"ctl/@2/@3", 3, "ctl/@2"},
      {"ctl/2", 0, "ctl/2"},
      {"ctl@2", 0, "ctl@2"},
      {"@3", 0, "@3"},
      {"/@1", 1, ""},
      {"", 0, ""},
      {"ctl/@88888888888", 2989542968, "ctl"},  // modulo 2^32
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.target);
    EXPECT_EQ(KernelOfTarget(c.target), c.kernel);
    for (const i32 none : {INT32_MIN, -1, 0}) EXPECT_EQ(WorkingTargetName(c.target, none), c.without);
    EXPECT_EQ(WorkingTargetName(c.target, 1), c.without + "/@1");
    EXPECT_EQ(WorkingTargetName(c.target, INT32_MAX), c.without + "/@2147483647");
  }
}

}  // namespace
