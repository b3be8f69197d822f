// The scheduler against schedules worked out by hand, in schedules/*.toml: the comments "#> TIME TYPE
// SUBJECT" are the records due, in microseconds from the start of the logger.
#include "taskrunner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "parser.h"
#include "ringreader.h"

namespace sim {
namespace {

std::string NameOf(const ProcessorSpec& spec, uint32_t id) {
  for (const Task& task : spec.tasks) {
    if (task.id == id) return task.name;
  }
  for (const Testpoint& point : spec.testpoints) {
    if (point.address == id) return point.name;
  }
  std::string code;
  for (int shift = 24; shift >= 0; shift -= 8) code += static_cast<char>(id >> shift & 0xFF);
  return code;
}

// What the tasks do in one step of the clock, taken in strides of so many nanoseconds.
std::string Records(const Scenario& scenario, uint64_t strideNs) {
  const ProcessorSpec& spec = scenario.processors[0];
  Logger logger(spec.cellCount, scenario.tickBits);
  TaskRunner runner(spec, scenario.seed, scenario.Clock(), logger);
  logger.Start(scenario.startTicks, runner.RunningTaskId(), std::nullopt);
  for (uint64_t now = strideNs; now < scenario.stepNs; now += strideNs)
    runner.AdvanceBefore(now, UINT64_MAX / 2);
  runner.AdvanceBefore(scenario.stepNs, UINT64_MAX / 2);
  std::ostringstream lines;
  for (const auto& record : simtest::RecordsOf(logger.Words())) {
    lines << "#> " << record.time - scenario.startTicks << ' ' << record.type << ' '
          << NameOf(spec, record.id) << '\n';
  }
  return lines.str();
}

TEST(TaskRunner, KeepsToTheSchedule) {
  int count = 0;
  for (const auto& file : std::filesystem::directory_iterator(SIM_SCHEDULES)) {
    std::ifstream stream(file.path());
    std::string text = "clock = \"stepped\"\n", expected;
    for (std::string line; std::getline(stream, line); text += line + "\n") {
      if (line.starts_with("#> ")) expected += line + "\n";
      if (line.starts_with("task =")) text += "[timer]\nresolution_ns = 1000\n[scheduler]\nslots = 256\n";
    }
    const Scenario scenario = ParseScenario(text, file.path());
    EXPECT_EQ(Records(scenario, scenario.stepNs), expected) << file.path();
    EXPECT_EQ(Records(scenario, 777), expected) << file.path() << " in many steps";
    ++count;
  }
  EXPECT_GT(count, 0);
}

}  // namespace
}  // namespace sim
