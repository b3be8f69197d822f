// Scenarios from text: what they hold, and how mistakes are told.
#include "parser.h"

#include <gtest/gtest.h>

#include "builtins.h"
#include "duration.h"
#include "status.h"

namespace sim {
namespace {

// The text of the failure; empty when the scenario is accepted.
std::string MistakeIn(const std::string& text) {
  try {
    ParseScenario(text, "my.toml");
    return {};
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.status, badScenario);
    return failure.text;
  }
}

TEST(Duration, IsReadExactly) {
  struct Case {
    const char* text;
    std::optional<uint64_t> ns;
  };
  constexpr Case cases[] = {
      {"0ns", 0},
      {"250us", 250'000},
      {"1.5ms", 1'500'000},
      {"0.000000001s", 1},
      {"86400s", 86'400'000'000'000},
      {"2 s", 2'000'000'000},
      {"1.50ns", std::nullopt},
      {"0.0000000001s", std::nullopt},
      {"86400.1s", std::nullopt},
      {"99999999999999999999s", std::nullopt},
      {"1.2.3s", std::nullopt},
      {".5s", std::nullopt},
      {"5.s", std::nullopt},
      {"-1s", std::nullopt},
      {"5", std::nullopt},
      {"5min", std::nullopt},
      {"s", std::nullopt},
      {"", std::nullopt},
  };
  for (const Case& c : cases) EXPECT_EQ(ParseDuration(c.text), c.ns) << c.text;
}

TEST(Parser, ReadsTasksWithTheirActions) {
  const Scenario scenario = ParseScenario(R"(clock = "stepped"
step = "2ms"
[timer]
bits = 16
resolution_ns = 30.0
[[kernel]]
number = 3
slots = 10
[[kernel.task]]
name = "A"
priority = 7
slice = "1ms"
period = "10ms"
run = "2ms"
late_issue = "ABCD"
waits = [{at = "1ms", for = "5us"}]
testpoints = [{name = "P", at = "500us"}]
)",
                                          "my.toml");
  EXPECT_EQ(scenario.stepNs, 2'000'000u);
  EXPECT_EQ(scenario.Clock().ticksPerSecond, 33'333'333u);
  ASSERT_EQ(scenario.cores.size(), 1u);
  const CoreSpec& core = scenario.cores[0];
  EXPECT_EQ(core.number, 3);
  ASSERT_EQ(core.tasks.size(), 2u);
  EXPECT_EQ(core.tasks[1].name, "Idle3");
  EXPECT_EQ(core.tasks[0].lateIssue, 0x41424344u);
  ASSERT_EQ(core.tasks[0].actions.size(), 2u);
  EXPECT_EQ(core.tasks[0].actions[0].id, core.testpoints[0].address);
  EXPECT_EQ(core.tasks[0].actions[1].kind, Action::Kind::wait);
}

TEST(Parser, DerivesTheTickRateAsHostsDo) {
  struct Case {
    const char* timer;
    uint64_t ticksPerSecond;
  };
  constexpr Case cases[] = {
      {"resolution_ns = 1000", 1'000'000},
      {"cpu = \"PPC603\"\nbus_clock_hz = 66_000_000\ncpu_clock_hz = 200_000_000", 16'500'000},
      {"cpu = \"PPC603\"", 8'250'000},
      {"cpu = \"PPC603e\"\ncpu_clock_hz = 200_000_000", 200'000'000},
      {"", 33'000'000},
  };
  for (const Case& c : cases) {
    const Scenario scenario =
        ParseScenario(std::string("[timer]\n") + c.timer + "\n[scheduler]\n", "my.toml");
    EXPECT_EQ(scenario.Clock().ticksPerSecond, c.ticksPerSecond) << c.timer;
  }
}

struct Mistake {
  const char* text;
  const char* message;
};

constexpr Mistake mistakes[] = {
    {"", "my.toml:1: expected a table [scheduler] or [[kernel]]"},
    {"[scheduler]\nslots = 1", "my.toml:2: slots: expected an integer from 2 to 4000000"},
    {"[scheduler]\nslots = 4.0", "my.toml:2: slots: expected an integer from 2 to 4000000"},
    {"[scheduler]\nslot = 4", "my.toml:2: unknown key 'slot', did you mean 'slots'?"},
    {"[scheduler]\n[timer]\nwidth = 16",
     "my.toml:3: unknown key 'width', expected one of: bits, start_ticks, resolution_ns, cpu, cpu_clock_hz, "
     "bus_clock_hz"},
    {"[scheduler]\n[timer]\nbits = 20", "my.toml:3: bits: expected 16 or 28"},
    {"[scheduler]\n[timer]\nresolution_ns = nan",
     "my.toml:3: resolution_ns: expected a number from 0.1 to 1000000000"},
    {"clock = \"sundial\"\n[scheduler]", "my.toml:1: clock: expected \"wall\" or \"stepped\""},
    {"step = \"1ms\"\n[scheduler]",
     "my.toml:1: step: expected a duration with clock = \"stepped\", and only then"},
    {"[scheduler]\n[[kernel]]\nslots = 8", "my.toml:2: number: expected the kernel's number"},
    {"[[kernel]]\nnumber = 1\n[[kernel]]\nnumber = 1",
     "my.toml:4: number: expected a number that no other kernel has"},
    {"[scheduler]\n[[scheduler.task]]\nname = \"A\"\nrun = \"1ms\"",
     "my.toml:2: priority: expected an integer from 1 to 255"},
    {"[scheduler]\n[[scheduler.task]]\nname = \"A\"\npriority = 1",
     "my.toml:2: run: expected a duration such as \"250us\""},
    {"[scheduler]\n[[scheduler.task]]\nname = \"A\"\npriority = 1\nrun = 5",
     "my.toml:5: run: expected a duration such as \"250us\", \"1.5ms\" or \"2s\""},
    {"[scheduler]\n[[scheduler.task]]\nname = \"Idle\"\npriority = 1\nrun = \"1s\"",
     "my.toml:1: idle: expected a name that no other task has"},
    {"[scheduler]\nslots = ", "my.toml:2: expected valid TOML: "},
};

TEST(Parser, TellsMistakesWithFileLineAndWhatWasExpected) {
  for (const Mistake& mistake : mistakes) {
    const std::string told = MistakeIn(mistake.text);
    EXPECT_EQ(told.substr(0, std::string(mistake.message).size()), mistake.message) << told;
    EXPECT_EQ(told.find('\n'), std::string::npos) << told;
  }
}

// The keys of a task, each behind four lines that are in order.
constexpr Mistake taskMistakes[] = {
    {"jitter = \"1ms\"", "my.toml:5: jitter: expected less than the run time"},
    {"offset = \"1ms\"", "my.toml:5: offset: expected a period with it"},
    {"period = \"1ms\"\ndeadline = \"1ms\"",
     "my.toml:6: deadline: expected less than the period, which is the deadline anyway"},
    {"late_issue = \"LONGER\"", "my.toml:5: late_issue: expected four printable characters"},
    {"overrun = {by = \"1ms\"}", "my.toml:5: every: expected a number of cycles"},
    {"testpoints = [{name = \"P\", at = \"2ms\"}]",
     "my.toml:5: at: expected a point within the longest run time of the task"},
    {"events = [{task = \"B\"}]", "my.toml:5: task: expected the name of a task of the same kernel"},
    {"waits = [{at = \"1us\"}]", "my.toml:5: for: expected a duration such as \"250us\""},
    {"issues = [\"OVRN\"]", "my.toml:5: issues: expected a table"},
    {"priorty = 9", "my.toml:5: unknown key 'priorty', did you mean 'priority'?"},
    {"[[fault]]\ncall = \"GetBlock\"",
     "my.toml:6: call: expected the name of a target-access function, or \"any\""},
    {"[[fault]]\ncall = \"any\"", "my.toml:5: status: expected a status, a result or a delay"},
    {"[[fault]]\ncall = \"any\"\nresult = 0",
     "my.toml:7: result: expected call = \"CallProcedure\" and no status"},
};

TEST(Parser, TellsMistakesInTasksAndFaults) {
  for (const Mistake& mistake : taskMistakes) {
    EXPECT_EQ(MistakeIn(std::string("[[scheduler.task]]\nname = \"A\"\npriority = 1\nrun = \"1ms\"\n") +
                        mistake.text),
              mistake.message);
  }
}

TEST(Builtins, AreScenarios) {
  for (const Builtin& builtin : Builtins()) {
    SCOPED_TRACE(builtin.name);
    const Scenario scenario = ParseScenario(builtin.text, builtin.name);
    EXPECT_EQ(scenario.cores[0].number, schedulerNumber);
  }
}

}  // namespace
}  // namespace sim
