// The task list in portions, task names and task data.
#include <gtest/gtest.h>

#include "scenariofile.h"
#include "status.h"
#include "target/access.h"

namespace {

using simtest::ScenarioFile;

// A scheduler with `count` tasks, the idle task included.
std::string TaskSet(int count) {
  std::string text = "clock = \"stepped\"\nstep = \"1ms\"\n[scheduler]\n";
  for (int i = 1; i < count; ++i) {
    text += "[[scheduler.task]]\nname = \"T" + std::to_string(i) + "\"\npriority = 9\nrun = \"1ms\"\n";
  }
  return text;
}

constexpr uint32_t untouched = 0xCCCCCCCC;

TEST(TaskList, StatesItsSizeInBytes) {
  const ScenarioFile scenario(TaskSet(5));
  uint32_t size = 0;
  EXPECT_EQ(DbgTasksList(scenario.Target(), &size, 0), 0u);
  EXPECT_EQ(size, 24u);
}

TEST(TaskList, FitsIntoOnePortionUpTo120Tasks) {
  const ScenarioFile scenario(TaskSet(120));
  std::vector<uint32_t> words(122, untouched);
  EXPECT_EQ(DbgTasksList(scenario.Target(), words.data(), 484), 0u);
  EXPECT_EQ(words[120], 0x00010078u);
  EXPECT_EQ(words[121], untouched);
}

TEST(TaskList, GoesOnBehindTheContinuationWord) {
  const ScenarioFile scenario(TaskSet(243));
  uint32_t size = 0;
  ASSERT_EQ(DbgTasksList(scenario.Target(), &size, 0), 0u);
  ASSERT_EQ(size, 976u);
  std::vector<uint32_t> words(245, untouched);
  ASSERT_EQ(DbgTasksList(scenario.Target(), &words[0], 976), 0u);
  EXPECT_EQ(words[1], 0x00010001u);
  EXPECT_EQ(words[120], 0x00010078u);
  EXPECT_EQ(words[121], taskListContinues);
  EXPECT_EQ(words[122], untouched);
  ASSERT_EQ(DbgTasksList(scenario.Target(), &words[121], 492), 0u);
  EXPECT_EQ(words[121], 0x00010079u);
  EXPECT_EQ(words[240], 0x000100F0u);
  EXPECT_EQ(words[241], taskListContinues);
  ASSERT_EQ(DbgTasksList(scenario.Target(), &words[241], 12), 0u);
  EXPECT_EQ(words[243], 0x000100F3u);
  EXPECT_EQ(words[244], untouched);
}

TEST(TaskList, RefusesASizeThatIsNotLeft) {
  const ScenarioFile scenario(TaskSet(130));
  std::vector<uint32_t> words(140);
  for (const uint32_t size : {3u, 36u, 44u, 520u}) {
    EXPECT_EQ(DbgTasksList(scenario.Target(), words.data(), size), sim::badArgument) << size;
  }
}

TEST(TaskList, IsThatOfTheKernelInTheTargetName) {
  const ScenarioFile scenario(R"(clock = "stepped"
step = "1ms"
[scheduler]
task = [{name = "S", priority = 1, run = "1ms"}]
[[kernel]]
number = 2
task = [{name = "K", priority = 200, slice = "1500us", run = "1ms"}])");
  uint32_t words[3];
  ASSERT_EQ(DbgTasksList(scenario.Target(), words, 12), 0u);
  EXPECT_EQ(words[1], 0x00010001u);
  ASSERT_EQ(DbgTasksList(scenario.Kernel(2).c_str(), words, 12), 0u);
  EXPECT_EQ(words[1], 0x00020001u);
  EXPECT_EQ(DbgTasksList(scenario.Kernel(1).c_str(), words, 12), sim::unknownKernel);

  char name[4] = "xyz";
  ASSERT_EQ(DbgTaskGetName(scenario.Target(), 0x00020002, name, sizeof name), 0u);
  EXPECT_STREQ(name, "Idl");
  uint32_t data = 0;
  ASSERT_EQ(DbgTaskGetData(scenario.Target(), 0x00020001, taskDataTimeSlice, &data, 4), 0u);
  EXPECT_EQ(data, 1500u);
  ASSERT_EQ(DbgTaskGetData(scenario.Target(), 0x00020001, taskDataPriority, &data, 4), 0u);
  EXPECT_EQ(data >> 16 & 0xFF, 200u);
  EXPECT_EQ(DbgTaskGetData(scenario.Target(), 0x00020001, 2, &data, 4), sim::unknownTaskItem);
  EXPECT_EQ(DbgTaskGetData(scenario.Target(), 0x00020001, taskDataPriority, &data, 3), sim::badArgument);
  EXPECT_EQ(DbgTaskGetName(scenario.Target(), 0x00030001, name, sizeof name), sim::unknownTask);
}

}  // namespace
