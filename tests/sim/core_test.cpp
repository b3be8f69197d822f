// The scheduler, against schedules worked out by hand. One tick is a microsecond, and times count from the
// start of the logger.
#include "core.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "parser.h"
#include "ringreader.h"

namespace sim {
namespace {

using simtest::RingReader;
using simtest::RingRecord;

constexpr uint64_t startTicks = 1'000'000;
constexpr uint64_t us = 1000;

// A record with its time from the start and its subject by name; testpoints and issues as their hex id.
struct Line {
  uint64_t time;
  uint32_t type;
  std::string name;

  bool operator==(const Line&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const Line& line) {
    return out << line.time << ' ' << line.type << ' ' << line.name << '\n';
  }
};
using Lines = std::vector<Line>;

std::string NameOf(const CoreSpec& spec, const RingRecord& record) {
  for (const Task& task : spec.tasks) {
    if (task.id == record.id) return task.name;
  }
  for (const Testpoint& point : spec.testpoints) {
    if (point.address == record.id) return point.name;
  }
  std::string code;
  for (int shift = 24; shift >= 0; shift -= 8) code += static_cast<char>(record.id >> shift & 0xFF);
  return code;
}

// What the tasks do before `endUs`, the logger being started at 0. `tasks` are the tables of a TOML list.
Lines RunTasks(std::string tasks, uint64_t endUs) {
  std::replace(tasks.begin(), tasks.end(), '\n', ' ');  // TOML wants each table on one line
  const Scenario scenario = ParseScenario(
      "[timer]\nresolution_ns = 1000\nstart_ticks = 1000000\n[scheduler]\ntask = [" + tasks + "]\n",
      "test.toml");
  const CoreSpec& spec = scenario.cores[0];
  Logger logger(256, 28);
  Core core(spec, scenario.seed, scenario.Clock(), logger);
  logger.Start(startTicks, core.RunningTaskId(), std::nullopt);
  core.AdvanceBefore(endUs * us);
  Lines lines;
  for (const RingRecord& record : RingReader(logger.Words()).Records()) {
    lines.push_back({record.time - startTicks, record.type, NameOf(spec, record)});
  }
  return lines;
}

TEST(Core, PreemptsByPriorityAndWaits) {
  const Lines expected = {{0, 4, "Idle"},  {0, 3, "Slow"},   {10, 0, "Fast"},  {20, 6, "P"},
                          {40, 1, "Slow"}, {80, 4, "Idle"},  {100, 3, "Slow"}, {110, 0, "Fast"},
                          {120, 6, "P"},   {140, 1, "Slow"}, {180, 1, "Idle"}};
  EXPECT_EQ(RunTasks(R"(
      {name = "Slow", priority = 10, period = "200us", run = "100us", waits = [{at = "50us", for = "20us"}]},
      {name = "Fast", priority = 20, period = "100us", offset = "10us", run = "30us",
       testpoints = [{name = "P", at = "10us"}]})",
                     200),
            expected);
}

TEST(Core, SharesTimeSlicesAmongEqualPriorities) {
  const Lines expected = {{0, 4, "Idle"}, {0, 2, "B"},  {0, 3, "A"},  {10, 5, "B"},   {20, 5, "A"},
                          {30, 5, "B"},   {40, 5, "A"}, {45, 1, "B"}, {50, 1, "Idle"}};
  EXPECT_EQ(RunTasks(R"({name = "A", priority = 5, slice = "10us", period = "1ms", run = "25us"},
                        {name = "B", priority = 5, slice = "10us", period = "1ms", run = "25us"})",
                     1000),
            expected);
}

TEST(Core, KeepsTheRestOfASliceOverAPreemption) {
  const Lines expected = {{0, 4, "Idle"}, {0, 2, "B"},  {0, 3, "A"},  {4, 0, "Top"},
                          {9, 1, "A"},    {15, 5, "B"}, {20, 1, "A"}, {25, 1, "Idle"}};
  EXPECT_EQ(RunTasks(R"({name = "A", priority = 5, slice = "10us", period = "1ms", run = "15us"},
                        {name = "B", priority = 5, period = "1ms", run = "5us"},
                        {name = "Top", priority = 6, period = "1ms", offset = "4us", run = "5us"})",
                     1000),
            expected);
}

TEST(Core, RaisesIssuesForMissedDeadlinesAndLostReleases) {
  const Lines expected = {{0, 4, "Idle"},   {0, 3, "T"},      {50, 7, "LATE"},
                          {60, 1, "Idle"},  {100, 3, "T"},    {150, 7, "LATE"},
                          {200, 7, "LATE"}, {230, 1, "Idle"}, {300, 3, "T"}};
  EXPECT_EQ(RunTasks(R"({name = "T", priority = 5, period = "100us", deadline = "50us", run = "60us",
                         overrun = {every = 2, by = "70us"}, late_issue = "LATE"})",
                     350),
            expected);
}

// At 150 us the first cycle's deadline passes while the second is at work, in good time.
TEST(Core, HoldsEachCycleToItsOwnDeadline) {
  const Lines expected = {{0, 4, "Idle"}, {0, 3, "R"},   {5, 2, "L"},   {10, 1, "L"},    {70, 1, "Idle"},
                          {100, 3, "R"},  {105, 2, "L"}, {110, 1, "L"}, {170, 1, "Idle"}};
  EXPECT_EQ(RunTasks(R"({name = "R", priority = 5, period = "100us", run = "10us",
                         events = [{task = "L", at = "5us"}]},
                        {name = "L", priority = 1, deadline = "145us", run = "60us"})",
                     200),
            expected);
}

TEST(Core, IsInTimeWhenACycleEndsAtTheNextRelease) {
  const Lines expected = {{0, 4, "Idle"}, {0, 3, "T"}, {100, 1, "Idle"}, {100, 3, "T"}};
  EXPECT_EQ(RunTasks(R"({name = "T", priority = 5, period = "100us", run = "100us"})", 200), expected);
}

TEST(Core, ReleasesTasksByEvents) {
  const Lines expected = {{0, 4, "Idle"},   {0, 3, "Raiser"}, {5, 2, "High"}, {5, 0, "High"},
                          {8, 1, "Raiser"}, {13, 2, "Low"},   {23, 1, "Low"}, {27, 1, "Idle"}};
  EXPECT_EQ(RunTasks(R"({name = "Raiser", priority = 5, period = "100us", run = "20us",
                         events = [{task = "High", at = "5us"}, {task = "Low", at = "10us"}]},
                        {name = "High", priority = 9, run = "3us"}, {name = "Low", priority = 1, run = "4us"})",
                     100),
            expected);
}

// An event for a task at work asks for one more cycle, however often it is raised.
TEST(Core, RemembersOneEventForATaskAtWork) {
  const Lines expected = {{0, 4, "Idle"}, {0, 3, "R"},  {1, 2, "L"},    {2, 2, "L"},
                          {3, 2, "L"},    {10, 1, "L"}, {30, 1, "Idle"}};
  EXPECT_EQ(RunTasks(R"({name = "R", priority = 5, period = "1ms", run = "10us",
                         events = [{task = "L", at = "1us"}, {task = "L", at = "2us"}, {task = "L", at = "3us"}]},
                        {name = "L", priority = 1, run = "10us"})",
                     1000),
            expected);
}

TEST(Core, ActsOnlyInEveryNthCycle) {
  const Lines expected = {{0, 4, "Idle"},   {0, 3, "T"},      {20, 1, "Idle"}, {100, 3, "T"},
                          {105, 7, "HEAT"}, {120, 1, "Idle"}, {200, 3, "T"}};
  EXPECT_EQ(RunTasks(R"({name = "T", priority = 5, period = "100us", run = "20us",
                         issues = [{code = "HEAT", at = "5us", every = 2}]})",
                     220),
            expected);
}

TEST(Core, DoesTheSameInOneStepAsInMany) {
  const Scenario scenario = ParseScenario(R"([timer]
resolution_ns = 100
[scheduler]
task = [{name = "A", priority = 5, slice = "20us", period = "130us", run = "50us", jitter = "30us"},
        {name = "B", priority = 5, slice = "30us", period = "210us", run = "60us", jitter = "50us"},
        {name = "C", priority = 8, period = "70us", run = "9us", jitter = "8us"}])",
                                          "test.toml");
  std::vector<std::vector<uint32_t>> words;
  for (const uint64_t stepNs : {uint64_t{10'000'000}, uint64_t{777}}) {
    Logger logger(64, 28);
    Core core(scenario.cores[0], scenario.seed, scenario.Clock(), logger);
    logger.Start(startTicks, core.RunningTaskId(), std::nullopt);
    for (uint64_t now = 0; now < 10'000'000; now += stepNs)
      core.AdvanceBefore(std::min(now + stepNs, uint64_t{10'000'000}));
    words.push_back(logger.Words());
  }
  EXPECT_EQ(words[0], words[1]);
}

// Published values of the splitmix64 generator for this seed.
TEST(Random, GivesTheSameNumbersEverywhere) {
  Random random(1234567);
  EXPECT_EQ(random.Next(), 6457827717110365317u);
  EXPECT_EQ(random.Next(), 3203168211198807973u);
}

}  // namespace
}  // namespace sim
