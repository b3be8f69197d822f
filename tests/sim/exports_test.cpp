// The variables, procedures and memory of a controller through the exported functions.
#include <gtest/gtest.h>

#include <thread>

#include "ringreader.h"
#include "scenariofile.h"
#include "status.h"
#include "target/access.h"

namespace {

using simtest::RingReader;
using simtest::RingRecord;
using simtest::ScenarioFile;

constexpr const char* machine = R"(clock = "stepped"
step = "10ms"
seed = 42
[timer]
resolution_ns = 1000
cpu = "PPC603-and-more"
[scheduler]
slots = 64
[[kernel]]
number = 1
slots = 256
[[kernel.task]]
name = "Control"
priority = 9
period = "1ms"
run = "300us"
jitter = "200us"
testpoints = [{name = "Begin"}, {name = "Middle", at = "50us"}]
)";

double Number(const std::string& target, const std::string& name) {
  double value = -1;
  EXPECT_EQ(GetVariable(target.c_str(), name.c_str(), &value, 0), 0u) << name;
  return value;
}

std::string Text(const std::string& target, const std::string& name, uint32_t size = 255) {
  std::string text(size, 'x');
  EXPECT_EQ(GetVariable(target.c_str(), name.c_str(), text.data(), size), 0u) << name;
  return text.substr(0, text.find('\0'));
}

uint32_t Start(const std::string& target, const std::string& logger) {
  double result = 0;
  const uint32_t status = CallProcedure(target.c_str(), (logger + ".Start()").c_str(), &result);
  EXPECT_EQ(result, status == 0 ? 1.0 : 0.0);
  return status;
}

std::vector<uint32_t> ReadBuffer(const std::string& target, const std::string& logger) {
  std::vector<uint32_t> words(static_cast<size_t>(Number(target, logger + ".BufferSize")) / 4);
  const auto address = static_cast<int64_t>(Number(target, logger + ".BufferAddress"));
  EXPECT_EQ(GetBlock32(target.c_str(), address, words.data(), static_cast<uint32_t>(words.size())), 0u);
  return words;
}

TEST(Variables, AreThoseOfTheVocabulary) {
  const ScenarioFile scenario(machine);
  const std::string kernel = scenario.Kernel(1);
  EXPECT_EQ(Number(kernel, "Target.Mpu.Resolution"), 1000);
  EXPECT_EQ(Text(kernel, "Target.Cpu"), "PPC603-and-more");
  EXPECT_EQ(Text(kernel, "Target.Cpu", 10), "PPC603-an");
  EXPECT_EQ(Number(kernel, "Kernel.1.Logger.BufferSize"), 8 + 256 * 8);
  EXPECT_EQ(Number(kernel, "Scheduler.Logger.BufferSize"), 8 + 64 * 8);
  EXPECT_EQ(Number(kernel, "Watchpoint.Entity!Objects"), 2);
  EXPECT_EQ(Text(kernel, "Watchpoint.Entity!Object1"), "Middle");
  EXPECT_EQ(Number(kernel, "Watchpoint.Entity.Middle.Prop.Address"), 0x00FF0010);
  EXPECT_EQ(Number(scenario.Target(), "Watchpoint.Entity!Objects"), 0);
}

TEST(Variables, ThatDoNotExistAnswer0x50201) {
  const ScenarioFile scenario(machine);
  double value = 0;
  for (const char* name :
       {"Target.CpuClock", "Target.BusClock", "Target.Mpu", "", "Kernel.0.Logger.BufferSize",
        "Kernel.01.Logger.BufferSize", "Kernel..Logger.BufferSize", "Kernel.1.Logger.Buffer",
        "Kernel.4294967295.Logger.BufferSize", "Watchpoint.Entity!Object2",
        "Watchpoint.Entity.End.Prop.Address"}) {
    EXPECT_EQ(GetVariable(scenario.Kernel(1).c_str(), name, &value, 0), 0x50201u) << name;
    EXPECT_EQ(PutVariable(scenario.Target(), name, "A", 2), 0x50201u) << name;
  }
  EXPECT_EQ(CallProcedure(scenario.Target(), "Kernel.2.Logger.Start()", &value), 0x50401u);
  EXPECT_EQ(CallProcedure(scenario.Target(), "Kernel.1.Logger.Start", &value), 0x50401u);
}

TEST(Variables, KeepTheirTypeAndMostCannotBeWritten) {
  const ScenarioFile scenario(machine);
  char buffer[16];
  EXPECT_EQ(GetVariable(scenario.Target(), "Target.Mpu.Resolution", buffer, 16), sim::wrongType);
  EXPECT_EQ(GetVariable(scenario.Target(), "Target.Cpu", buffer, 0), sim::wrongType);
  EXPECT_EQ(PutVariable(scenario.Target(), "Target.Cpu", "A", 2), sim::readOnly);
  EXPECT_EQ(PutVariable(scenario.Target(), "Scheduler.Logger.TriggerTask", "A", 0), sim::badArgument);
  EXPECT_EQ(PutVariable(scenario.Target(), "Scheduler.Logger.TriggerTask", "ABC", 2), 0u);
  EXPECT_EQ(Text(scenario.Target(), "Scheduler.Logger.TriggerTask"), "AB");
}

TEST(Logger, WithAnUnknownTriggerDoesNotStart) {
  const ScenarioFile scenario(machine);
  ASSERT_EQ(PutVariable(scenario.Target(), "Kernel.1.Logger.TriggerTask", "Contol", 7), 0u);
  EXPECT_EQ(Start(scenario.Target(), "Kernel.1.Logger"), sim::unknownTrigger);
  char text[200];
  GetErrorDescription("", sim::unknownTrigger, text, sizeof text);
  EXPECT_STREQ(text, "The logger has no trigger task 'Contol', expected one of: Control, Idle1");
  EXPECT_TRUE(RingReader(ReadBuffer(scenario.Target(), "Kernel.1.Logger")).Records().empty());
}

TEST(Logger, FreezesAfterItsTrigger) {
  const ScenarioFile scenario(machine);
  ASSERT_EQ(PutVariable(scenario.Target(), "Kernel.1.Logger.TriggerTask", "Control", 8), 0u);
  ASSERT_EQ(Start(scenario.Target(), "Kernel.1.Logger"), 0u);
  std::vector<uint32_t> words;
  // Four records a millisecond: 128 of them in four reads of 10 ms.
  for (int read = 0; read < 4; ++read) words = ReadBuffer(scenario.Target(), "Kernel.1.Logger");
  const auto records = RingReader(words).Records();
  EXPECT_EQ(records.size(), 2u + 128u);  // the start, the trigger, and half a buffer
  EXPECT_EQ(ReadBuffer(scenario.Target(), "Kernel.1.Logger"), words);
}

TEST(Memory, AdvancesTheSteppedClockWithEachReadAndGrows) {
  const ScenarioFile scenario(machine);
  ASSERT_EQ(Start(scenario.Target(), "Kernel.1.Logger"), 0u);
  const auto first = RingReader(ReadBuffer(scenario.Target(), "Kernel.1.Logger")).Records();
  ASSERT_EQ(first.size(), 1u + 4 * 10);
  EXPECT_EQ(first[0], (RingRecord{1'000'000, 4, 0x00020002}));
  EXPECT_EQ(first[1], (RingRecord{1'000'000, 3, 0x00020001}));
  EXPECT_EQ(first[2], (RingRecord{1'000'000, 6, 0x00FF0000}));
  EXPECT_EQ(first[3], (RingRecord{1'000'050, 6, 0x00FF0010}));
  const auto second = RingReader(ReadBuffer(scenario.Target(), "Kernel.1.Logger")).Records();
  ASSERT_EQ(second.size(), 1u + 4 * 20);
  EXPECT_TRUE(std::equal(first.begin(), first.end(), second.begin()));
}

// The end of the first cycle, computed from the seed apart from this program: no machine may differ.
TEST(Memory, IsTheSameOnEveryMachine) {
  const ScenarioFile scenario(machine);
  ASSERT_EQ(Start(scenario.Target(), "Kernel.1.Logger"), 0u);
  const auto records = RingReader(ReadBuffer(scenario.Target(), "Kernel.1.Logger")).Records();
  EXPECT_EQ(records[4], (RingRecord{1000428, 1, 0x00020002}));
}

TEST(Memory, IsTheSameForTheSameSeedOnly) {
  std::string otherSeed = machine;
  otherSeed.replace(otherSeed.find("seed = 42"), 9, "seed = 43");
  const ScenarioFile one(machine), same(machine), other(otherSeed);
  std::vector<std::vector<uint32_t>> words;
  for (const ScenarioFile* scenario : {&one, &same, &other}) {
    ASSERT_EQ(Start(scenario->Target(), "Kernel.1.Logger"), 0u);
    for (int read = 0; read < 20; ++read) ReadBuffer(scenario->Target(), "Kernel.1.Logger");
    words.push_back(ReadBuffer(scenario->Target(), "Kernel.1.Logger"));
  }
  EXPECT_EQ(words[0], words[1]);
  EXPECT_NE(words[0], words[2]);
}

TEST(Memory, OutsideTheBuffersIsABadAddress) {
  const ScenarioFile scenario(machine);
  const auto address = static_cast<int64_t>(Number(scenario.Target(), "Kernel.1.Logger.BufferAddress"));
  uint32_t words[4];
  EXPECT_EQ(GetBlock32(scenario.Target(), address + 256 * 8, words, 2), 0u);
  for (const int64_t wrong :
       {address + 256 * 8 + 4, address - 4, address + 1, int64_t{0}, INT64_MIN, INT64_MAX}) {
    EXPECT_EQ(GetBlock32(scenario.Target(), wrong, words, 2), sim::badAddress) << wrong;
  }
  EXPECT_EQ(GetBlock32(scenario.Target(), address, words, 0xFFFFFFFF), sim::badAddress);
  EXPECT_EQ(GetBlock32(scenario.Target(), address, nullptr, 1), sim::badArgument);
}

TEST(Threads, MayShareAController) {
  const ScenarioFile scenario(machine);
  ASSERT_EQ(Start(scenario.Target(), "Kernel.1.Logger"), 0u);
  constexpr int readsPerThread = 50;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&scenario] {
      uint64_t newest = 0;
      for (int read = 0; read < readsPerThread; ++read) {
        const auto records = RingReader(ReadBuffer(scenario.Target(), "Kernel.1.Logger")).Records();
        ASSERT_FALSE(records.empty());
        EXPECT_GT(records.back().time, newest);
        newest = records.back().time;
        PutVariable("nowhere", "X", "Y", 2);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  // Every one of the 200 reads, and this one, has moved the time by 10 ms: 2010 cycles.
  const auto last = RingReader(ReadBuffer(scenario.Target(), "Kernel.1.Logger")).Records().back();
  EXPECT_EQ((last.time - 1'000'000) / 1000, 2009u);
}

}  // namespace
