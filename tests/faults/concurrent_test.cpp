// Commands that write to one place at once, and faults of the controller: what lies there is always whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <set>
#include <thread>

#include "cli/scenarios.h"
#include "tracedprogram.h"

namespace {

constexpr int commands = 4;

// Machine number n, which differs from the others in what its logs hold, recorded to `place`.
std::vector<std::string> RecordMachine(int number, const std::string& place, bool allLoggers) {
  std::vector<std::string> arguments{"record", "m" + std::to_string(number) + ".toml", "--start", "-o",
                                     place};
  if (allLoggers) arguments.insert(arguments.end(), {"--logger", "all"});
  return arguments;
}

void WriteMachines(const TempFolder& folder) {
  for (int i = 0; i < commands; ++i) {
    folder.Write("m" + std::to_string(i) + ".toml",
                 SteppedScenario(std::to_string(30 + 10 * i) + "ms", 64) + SteppedKernel(1));
  }
}

// Runs all commands at once and calls `look` until they have ended.
template <class Look>
void RunAll(const TempFolder& folder, const std::string& place, bool allLoggers, Look look) {
  std::vector<std::unique_ptr<Program>> programs;
  for (int i = 0; i < commands; ++i)
    programs.push_back(std::make_unique<Program>(folder, RecordMachine(i, place, allLoggers)));
  for (const auto& program : programs) {
    look();
    const Result result = program->Wait();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    look();
  }
}

// What each command alone leaves: the files of a folder, one behind the other, or the file.
std::string ContentAt(const TempFolder& folder, const std::string& place, bool allLoggers) {
  if (!allLoggers) return folder.Read(place);
  return folder.Read(place + "/kernel1.tasklog") + "|" + folder.Read(place + "/scheduler.tasklog");
}

TEST(ConcurrentCommands, NeverMix) {
  for (const bool allLoggers : {false, true}) {
    const TempFolder folder;
    WriteMachines(folder);
    std::set<std::string> whole;
    for (int i = 0; i < commands; ++i) {
      const std::string place = "alone" + std::to_string(i);
      ASSERT_EQ(RunTasklog(folder, RecordMachine(i, place, allLoggers)).exitCode, 0);
      whole.insert(ContentAt(folder, place, allLoggers));
    }
    ASSERT_EQ(whole.size(), std::size_t{commands});
    for (int round = 0; round < 5; ++round) {
      RunAll(folder, "a", allLoggers, [&] {
        // A single file is one of the whole ones at any time; those of a folder once all have ended.
        const std::string content = folder.Read("a");
        EXPECT_TRUE(allLoggers || content.empty() || whole.contains(content));
      });
      EXPECT_TRUE(whole.contains(ContentAt(folder, "a", allLoggers))) << "all loggers: " << allLoggers;
    }
    const std::vector<std::string> names = folder.Names();
    EXPECT_TRUE(std::none_of(names.begin(), names.end(),
                             [](const std::string& name) { return name.find(".tasklog-") != name.npos; }));
  }
}

// One command waits between its two files for another one, which must not come in between.
TEST(ConcurrentCommands, TakeTurnsInOneFolder) {
  if (!CanTrace()) GTEST_SKIP() << "this system does not let a test follow a program's calls";
  const TempFolder folder;
  WriteMachines(folder);
  std::string whole[2];
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(RunTasklog(folder, RecordMachine(i, "out", true)).exitCode, 0);
    whole[i] = ContentAt(folder, "out", true);
  }
  const std::vector<std::string> calls = RunTraced(folder, RecordMachine(0, "out", true)).calls;
  const auto lastRename = std::find(calls.rbegin(), calls.rend(), "rename");
  ASSERT_NE(lastRename, calls.rend());
  std::unique_ptr<Program> other;
  const auto runOther = [&] {
    other = std::make_unique<Program>(folder, RecordMachine(1, "out", true));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  };
  const auto at = static_cast<std::size_t>(calls.rend() - lastRename);
  EXPECT_EQ(RunTraced(folder, RecordMachine(0, "out", true), Disturbance::waits, at, runOther).exitCode, 0);
  ASSERT_TRUE(other);
  EXPECT_EQ(other->Wait().exitCode, 0);
  const std::string content = ContentAt(folder, "out", true);
  EXPECT_TRUE(content == whole[0] || content == whole[1]);
}

// Call n of the controller's functions and all behind it fail.
TEST(ControllerFaults, LeaveTheOldFileOrAWholeNewOne) {
  const TempFolder folder;
  int replaced = 0;
  int call = 1;
  for (int exitCode = 1; exitCode != 0 && call < 100; ++call) {
    SCOPED_TRACE(call);
    folder.Write("m.toml", SteppedScenario("20ms", 64) +
                               Fault("call = \"any\"\nstatus = 4711\nfrom = " + std::to_string(call)));
    folder.Write("a", std::string("old"));
    const Result result = RunTasklog(folder, {"record", "m.toml", "--start", "-o", "a"});
    exitCode = result.exitCode;
    ASSERT_TRUE(exitCode == 0 || exitCode == 1) << result.err;
    EXPECT_EQ(result.err.empty(), exitCode == 0);
    if (result.out.empty()) {
      EXPECT_EQ(folder.Read("a"), "old");
    } else {
      ++replaced;
      EXPECT_EQ(RunTasklog(folder, {"info", "a"}).exitCode, 0);
    }
  }
  EXPECT_GT(replaced, 1);
  EXPECT_LT(replaced, call - 3);  // starting and reading the ring take four calls
  RecordProperty("callsFailed", std::to_string(call - 1));
}

}  // namespace
