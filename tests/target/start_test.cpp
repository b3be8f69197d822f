// Starting a logger and the timer rate: which calls are made, and where each failure leads.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

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
      {"null trigger", nullptr, {}, 0, "s"},
      {"empty trigger", "", {}, 0, "s"},
      {"trigger", "Ctrl", {}, 0, "ps"},
      {"no kernel trigger", "Ctrl", {{"Kernel.0.Logger.T", 0x50201}}, 0, "pPS"},
      {"no trigger at all", "Ctrl", {{"TriggerTask", 0x50201}}, 0x50201, "pP"},
      {"scheduler's fails", "Ctrl", {{"Kernel.0", 0x50201}, {"Scheduler.Logger.T", 0x77}}, 0x77, "pP"},
      {"kernel trigger fails", "Ctrl", {{"Kernel.0.Logger.T", 0x77}}, 0, "ps"},
      {"with the code of a procedure", "Ctrl", {{"Kernel.0.Logger.T", 0x50401}}, 0, "ps"},
      {"no kernel start", "Ctrl", {{"Kernel.0.Logger.S", 0x50401}}, 0, "psS"},
      {"no start at all", nullptr, {{"Start()", 0x50401}}, 0x50401, "sS"},
      {"kernel start fails", nullptr, {{"Kernel.0", 0x88}}, 0x88, "s"},
      {"with the code of a variable", nullptr, {{"Kernel.0", 0x50201}}, 0x50201, "s"},
      {"scheduler start fails", nullptr, {{"Kernel.0", 0x50401}, {"Scheduler", 0x99}}, 0x99, "sS"},
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
  const std::pair<double, u32> cases[] = {{0.0, TLErrLoggerNotStarted},
                                          {-0.0, TLErrLoggerNotStarted},
                                          {1.0, 0},
                                          {-1.0, 0},
                                          {1e-300, 0},
                                          {NAN, 0}};
  for (const auto& [result, status] : cases) {
    ScriptedTarget target;
    target.procedures["Kernel.2.Logger.Start()"] = result;
    EXPECT_EQ(TLStartLog("ctl/@2", nullptr), status) << result;
    target.procedures = {{"Scheduler.Logger.Start()", result}};
    EXPECT_EQ(TLStartLog("ctl", nullptr), status) << result;
  }
}

TEST(StartLog, RefusesANullTarget) {
  ScriptedTarget target;
  EXPECT_EQ(TLStartLog(nullptr, "Ctrl"), u32{TLErrLoggerNotStarted});
  EXPECT_EQ(target.CallsOf(), "");
}

constexpr u64 before = 77;  // ticks per second

void ExpectRate(const char* cpu, const Numbers& numbers, const Failures& failures, u32 status,
                u64 ticksPerSecond, const char* calls) {
  SCOPED_TRACE(testing::Message() << cpu << ' ' << testing::PrintToString(numbers));
  ScriptedTarget target;
  for (const auto& [name, value] : numbers) target.numbers["Target." + name] = value;
  target.texts["Target.Cpu"] = cpu;
  target.failures = failures;
  _STLTaskLog log;
  log.ticksPerSecond = before;
  EXPECT_EQ(log.FetchTicksPerSecond("ctl"), status);
  EXPECT_EQ(log.ticksPerSecond, ticksPerSecond);
  EXPECT_EQ(target.CallsOf(), calls);
}

constexpr char resolution[] = "GetVariable(ctl, Target.Mpu.Resolution, 0)";
constexpr char cpuClock[] =
    "GetVariable(ctl, Target.Mpu.Resolution, 0); GetVariable(ctl, Target.Cpu, 10); "
    "GetVariable(ctl, Target.CpuClock, 0)";
constexpr char busClock[] =
    "GetVariable(ctl, Target.Mpu.Resolution, 0); GetVariable(ctl, Target.Cpu, 10); "
    "GetVariable(ctl, Target.BusClock, 0)";

TEST(TicksPerSecond, ComeFromTheResolution) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::pair<double, u64> cases[] = {{1000, 1000000}, {30, 33333333}, {0.125, 8000000000},
                                          {2e9, 0},        {0, 0},         {-5, 0},
                                          {NAN, 0},        {infinity, 0},  {1e-300, 0}};
  for (const auto& [tickLength, rate] : cases)
    ExpectRate("PPC603", {{"Mpu.Resolution", tickLength}}, {}, 0, rate, resolution);
  ExpectRate("", {}, {{"Resolution", 0x77}}, 0x77, before, resolution);
  ExpectRate("", {}, {{"Resolution", noSuchProcedure}}, noSuchProcedure, before, resolution);
}

TEST(TicksPerSecond, ComeFromAClockWithoutAResolution) {
  ExpectRate("PPC603", {{"BusClock", 66e6}, {"CpuClock", 1}}, {}, 0, 16500000, busClock);
  ExpectRate("PPC603", {{"BusClock", 7.9}}, {}, 0, 1, busClock);
  ExpectRate("PPC603", {{"CpuClock", 1e6}}, {}, 0, 8250000, busClock);
  ExpectRate("PPC603", {}, {{"BusClock", 0x88}}, 0x88, before, busClock);
  for (const char* cpu : {"386EX", "PPC603e", "PPC603    x", "ppc603", ""})
    ExpectRate(cpu, {{"CpuClock", 25e6}, {"BusClock", 1}}, {}, 0, 25000000, cpuClock);
  ExpectRate("PPC603", {{"CpuClock", 5}}, {{"Target.Cpu,", 0x77}}, 0, 5, cpuClock);
  ExpectRate("386EX", {}, {}, 0, 33000000, cpuClock);
  ExpectRate("386EX", {}, {{"CpuClock", 0x99}}, 0x99, before, cpuClock);
  ExpectRate("386EX", {{"CpuClock", 0x1p32 + 12}}, {}, 0, 12, cpuClock);
  ExpectRate("386EX", {{"CpuClock", NAN}}, {}, 0, 0, cpuClock);
}

TEST(TicksPerSecond, SurviveAProcessorNameWithoutEnd) {
  ScriptedTarget target;
  target.texts["Target.Cpu"] = "PPC603";
  target.terminatesTexts = false;
  _STLTaskLog log;
  EXPECT_EQ(log.FetchTicksPerSecond("ctl"), 0u);
  EXPECT_EQ(log.ticksPerSecond, 33000000u);
}

}  // namespace
