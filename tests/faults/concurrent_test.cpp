// Commands that write to one place at once, and faults of the controller: what lies there is always whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <set>

#include "cli/program.h"
#include "cli/scenarios.h"

namespace {

constexpr int commands = 4;

// Machine number n, which differs from the others in what its logs hold, recorded to `place`.
std::vector<std::string> RecordMachine(int number, const std::string& place, bool allLoggers) {
  std::vector<std::string> words{"tasklog", "record", "m" + std::to_string(number) + ".toml",
                                 "--start", "-o",     place};
  if (allLoggers) words.insert(words.end(), {"--logger", "all"});
  return words;
}

// What a command leaves: the files of a folder, one behind the other, or the file.
std::string ContentAt(const TempFolder& folder, const std::string& place, bool allLoggers) {
  if (!allLoggers) return folder.Read(place);
  return folder.Read(place + "/kernel1.tasklog") + "|" + folder.Read(place + "/scheduler.tasklog");
}

TEST(ConcurrentCommands, NeverMix) {
  for (const bool allLoggers : {false, true}) {
    const TempFolder folder;
    std::set<std::string> whole;
    for (int i = 0; i < commands; ++i) {
      const std::string number = std::to_string(i);
      folder.Write("m" + number + ".toml", SteppedScenario(number + "3ms", 64) + SteppedKernel(1));
      ASSERT_EQ(Program(folder, RecordMachine(i, "alone" + number, allLoggers)).Wait().exitCode, 0);
      whole.insert(ContentAt(folder, "alone" + number, allLoggers));
    }
    ASSERT_EQ(whole.size(), std::size_t{commands});
    for (int round = 0; round < 5; ++round) {
      std::list<Program> programs;
      for (int i = 0; i < commands; ++i) programs.emplace_back(folder, RecordMachine(i, "a", allLoggers));
      for (Program& program : programs) {
        EXPECT_EQ(program.Wait().exitCode, 0);
        // A single file is one of the whole ones at any time; those of a folder once all have ended.
        EXPECT_TRUE(allLoggers || whole.contains(folder.Read("a")));
      }
      EXPECT_TRUE(whole.contains(ContentAt(folder, "a", allLoggers))) << "all loggers: " << allLoggers;
    }
    const std::vector<std::string> names = folder.Names();
    EXPECT_TRUE(std::none_of(names.begin(), names.end(),
                             [](const std::string& name) { return name.find(".tasklog-") != name.npos; }));
  }
}

// Call n of the controller's functions and all behind it fail.
TEST(ControllerFaults, LeaveTheOldFileOrAWholeNewOne) {
  const TempFolder folder;
  int replaced = 0;
  int call = 1;
  for (int exitCode = 1; exitCode != 0 && call < 100; ++call) {
    SCOPED_TRACE(call);
    folder.Write("m.toml", SteppedScenario("20ms", 64) +
                               "[[fault]]\ncall = \"any\"\nstatus = 4711\nfrom = " + std::to_string(call));
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
