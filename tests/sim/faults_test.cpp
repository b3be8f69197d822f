// Faults strike the calls that the scenario names.
#include "faults.h"

#include <gtest/gtest.h>

#include <chrono>

#include "status.h"

namespace sim {
namespace {

// The numbers of the calls, 1 to 12, that fail.
std::vector<int> FailingCalls(const Fault& fault) {
  FaultPlan plan({fault});
  std::vector<int> failing;
  for (int call = 1; call <= 12; ++call) {
    try {
      plan.Apply("GetBlock32", "");
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.status, fault.status);
      failing.push_back(call);
    }
  }
  return failing;
}

Fault BlockFault() {
  Fault fault;
  fault.call = "GetBlock32";
  fault.status = 0xABCD;
  return fault;
}

TEST(Faults, StrikeFromEveryAndCount) {
  Fault fault = BlockFault();
  fault.from = 11;
  EXPECT_EQ(FailingCalls(fault), (std::vector{11, 12}));
  fault.from = 3;
  fault.every = 4;
  EXPECT_EQ(FailingCalls(fault), (std::vector{3, 7, 11}));
  fault.count = 2;
  EXPECT_EQ(FailingCalls(fault), (std::vector{3, 7}));
}

TEST(Faults, CountOnlyCallsOfTheirKindAndName) {
  Fault fault;
  fault.call = "GetVariable";
  fault.name = "Target.Cpu";
  fault.status = noAnswer;
  fault.from = 2;
  FaultPlan plan({fault});
  EXPECT_NO_THROW(plan.Apply("GetVariable", "Target.Cpu"));
  EXPECT_NO_THROW(plan.Apply("GetVariable", "Target.CpuClock"));
  EXPECT_NO_THROW(plan.Apply("PutVariable", "Target.Cpu"));
  EXPECT_THROW(plan.Apply("GetVariable", "Target.Cpu"), Failure);
}

TEST(Faults, SayWhatTheyAre) {
  Fault fault = BlockFault();
  fault.call = "any";
  fault.status = noAnswer;
  FaultPlan plan({fault});
  RememberText(noAnswer, "an earlier failure");
  try {
    plan.Apply("PutVariable", "X");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.text, "The controller does not answer (injected into call 1 of PutVariable)");
  }
}

TEST(Faults, DelayAndAnswer) {
  Fault fault;
  fault.call = "CallProcedure";
  fault.result = 0.0;
  fault.delayNs = 20'000'000;
  FaultPlan plan({fault});
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(plan.Apply("CallProcedure", "Scheduler.Logger.Start()"), 0.0);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(20));
}

}  // namespace
}  // namespace sim
