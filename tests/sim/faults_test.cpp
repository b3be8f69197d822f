// Faults strike the calls that the scenario names.
#include "faults.h"

#include <gtest/gtest.h>

#include "status.h"

namespace sim {
namespace {

// The numbers of the calls, 1 to 12, that fail.
std::vector<int> FailingCalls(const Fault& fault) {
  FaultPlan plan({fault});
  std::vector<int> failing;
  for (int call = 1; call <= 12; ++call) {
    EXPECT_NO_THROW(plan.Apply("GetVariable", "Other"));
    EXPECT_NO_THROW(plan.Apply("PutVariable", "Target.Cpu"));
    try {
      plan.Apply("GetVariable", "Target.Cpu");
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.status, fault.status);
      failing.push_back(call);
    }
  }
  return failing;
}

TEST(Faults, StrikeFromEveryAndCount) {
  Fault fault;
  fault.call = "GetVariable";
  fault.name = "Target.Cpu";
  fault.status = 0xABCD;
  fault.from = 11;
  EXPECT_EQ(FailingCalls(fault), (std::vector{11, 12}));
  fault.from = 3;
  fault.every = 4;
  EXPECT_EQ(FailingCalls(fault), (std::vector{3, 7, 11}));
  fault.count = 2;
  EXPECT_EQ(FailingCalls(fault), (std::vector{3, 7}));
}

}  // namespace
}  // namespace sim
