// Starting a logger and the timer rate: which calls are made, and where each failure leads.
#include <gtest/gtest.h>

#include <cmath>

#include "model/model.h"
#include "support/scriptedtarget.h"
#include "target/access.h"

namespace {

using Failures = std::map<std::string, u32>;
using Numbers = std::map<std::string, double>;

// The calls on "ctl" as letters: p and P write the trigger of the kernel and the scheduler, s and S start
// them.
std::string StartCalls(const ScriptedTarget& target) {
  const std::map<std::string, char> letters = {{"PutVariable(ctl, Kernel.0.Logger.TriggerTask, 5)", 'p'},
                                               {"PutVariable(ctl, Scheduler.Logger.TriggerTask, 5)", 'P'},
                                               {"CallProcedure(ctl, Kernel.0.Logger.Start())", 's'},
                                               {"CallProcedure(ctl, Scheduler.Logger.Start())", 'S'}};
  std::string calls;
  for (const std::string& call : target.calls) calls += letters.contains(call) ? letters.at(call) : '?';
  return calls;
}

TEST(StartLog, TriesTheKernelAndFallsBackToTheScheduler) {
  const struct {
    const char* name;
    const char* trigger;
    Failures failures;
    u32 status;
    const char* calls;
  } cases[] = {
      {"empty trigger", "", {}, 0, "s"},
      {"trigger", "Ctrl", {}, 0, "ps"},
      {"no kernel trigger", "Ctrl", {{"Kernel.0.Logger.T", 0x50201}}, 0, "pPS"},
      {"scheduler's fails", "Ctrl", {{"Kernel.0", 0x50201}, {"Scheduler.Logger.T", 0x77}}, 0x77, "pP"},
      {"kernel trigger fails", "Ctrl", {{"Kernel.0.Logger.T", 0x77}}, 0, "ps"},
      {"with the code of a procedure", "Ctrl", {{"Kernel.0.Logger.T", 0x50401}}, 0, "ps"},
      {"no kernel start", "Ctrl", {{"Kernel.0.Logger.S", 0x50401}}, 0, "psS"},
      {"kernel start fails", nullptr, {{"Kernel.0", 0x88}}, 0x88, "s"},
      {"with the code of a variable", nullptr, {{"Kernel.0", 0x50201}}, 0x50201, "s"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ScriptedTarget target;
    target.texts = {{"Kernel.0.Logger.TriggerTask", ""}, {"Scheduler.Logger.TriggerTask", ""}};
    target.procedures = {{"Kernel.0.Logger.Start()", 1.0}, {"Scheduler.Logger.Start()", 1.0}};
    target.failures = c.failures;
    EXPECT_EQ(TLStartLog("ctl", c.trigger), c.status);
    EXPECT_EQ(StartCalls(target), c.calls);
  }
}

TEST(StartLog, WritesTheTriggerWholeAndPassesTheNameOn) {
  ScriptedTarget target;
  target.texts["Kernel.2989542968.Logger.TriggerTask"] = "";
  target.procedures["Kernel.2989542968.Logger.Start()"] = 1.0;
  EXPECT_EQ(TLStartLog("ctl\\@88888888888", "Control loop"), 0u);
  EXPECT_EQ(target.CallsOf(),
            "PutVariable(ctl\\@88888888888, Kernel.2989542968.Logger.TriggerTask, 13); "
            "CallProcedure(ctl\\@88888888888, Kernel.2989542968.Logger.Start())");
  EXPECT_EQ(target.texts["Kernel.2989542968.Logger.TriggerTask"], std::string("Control loop\0", 13));
}

TEST(StartLog, TakesOnlyZeroForNotStarted) {
  const std::pair<double, u32> cases[] = {
      {0.0, TLErrLoggerNotStarted}, {-0.0, TLErrLoggerNotStarted}, {1.0, 0}, {1e-300, 0}, {NAN, 0}};
  for (const auto& [result, status] : cases) {
    ScriptedTarget target;
    target.procedures["Kernel.2.Logger.Start()"] = result;
    EXPECT_EQ(TLStartLog("ctl/@2", nullptr), status) << result;
  }
}

TEST(TicksPerSecond, ComeFromTheResolutionOrAClock) {
  const struct {
    const char* cpu;
    Numbers numbers;  // of "Target."
    Failures failures;
    u32 status;
    u64 ticksPerSecond;  // 77 before
  } cases[] = {
      {"PPC603", {{"Mpu.Resolution", 30}, {"BusClock", 1}}, {}, 0, 33333333},
      {"PPC603", {{"Mpu.Resolution", 0}}, {}, 0, 0},
      {"", {}, {{"Resolution", noSuchProcedure}}, noSuchProcedure, 77},
      {"PPC603", {{"BusClock", 66e6}, {"CpuClock", 1}}, {}, 0, 16500000},
      {"PPC603", {{"CpuClock", 1e6}}, {}, 0, 8250000},
      {"PPC603e", {{"CpuClock", 25e6}, {"BusClock", 1}}, {}, 0, 25000000},
      {"PPC603", {{"CpuClock", 5}}, {{"Target.Cpu,", 0x77}}, 0, 5},
      {"386EX", {}, {}, 0, 33000000},
      {"386EX", {}, {{"CpuClock", 0x99}}, 0x99, 77},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.cpu << ' ' << testing::PrintToString(c.numbers));
    ScriptedTarget target;
    for (const auto& [name, value] : c.numbers) target.numbers["Target." + name] = value;
    target.texts["Target.Cpu"] = c.cpu;
    target.failures = c.failures;
    _STLTaskLog log;
    log.ticksPerSecond = 77;
    EXPECT_EQ(log.FetchTicksPerSecond("ctl"), c.status);
    EXPECT_EQ(log.ticksPerSecond, c.ticksPerSecond);
  }
}

}  // namespace
