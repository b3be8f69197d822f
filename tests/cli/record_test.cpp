// Recording from the simulated controller.
#include <gtest/gtest.h>

#include <filesystem>

#include "cli/program.h"
#include "cli/scenarios.h"

namespace {

using Names = std::vector<std::string>;

std::string Machine() { return SteppedScenario("50ms", 64) + SteppedKernel(1) + SteppedKernel(2); }

TEST(Record, SavesWhatTheSchedulersLoggerHolds) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64));
  const Result result = RunTasklog(folder, {"record", "m.toml", "--start", "-o", "a.tasklog"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.out, "a.tasklog: 5 entries over 0.013000 s\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(folder.Names(), (Names{"a.tasklog", "m.toml"}));
  EXPECT_EQ(RunTasklog(folder, {"list", "a.tasklog"}).out,
            "time [s]  type       subject  running\n"
            "0.000000  switch     Idle     -\n"
            "0.001000  switch 3   Ctrl     Idle\n"
            "0.003000  switch 1   Idle     Ctrl\n"
            "0.011000  switch 3   Ctrl     Idle\n"
            "0.013000  switch 1   Idle     Ctrl\n");
}

TEST(Record, GivesEachLoggerAFileInAFolder) {
  const TempFolder folder;
  folder.Write("m.toml", Machine());
  const Result all = RunTasklog(folder, {"record", "m.toml", "--logger", "all", "--start", "-o", "logs"});
  EXPECT_EQ(all.exitCode, 0) << all.err;
  // Each read takes place 50 ms after the one before.
  EXPECT_EQ(all.out,
            "logs/scheduler.tasklog: 11 entries over 0.043000 s\n"
            "logs/kernel1.tasklog: 21 entries over 0.093000 s\n"
            "logs/kernel2.tasklog: 31 entries over 0.143000 s\n");
  const Names files = {"logs/", "logs/kernel1.tasklog", "logs/kernel2.tasklog", "logs/scheduler.tasklog",
                       "m.toml"};
  EXPECT_EQ(folder.Names(), files);
  const Result again = RunTasklog(folder, {"record", "m.toml", "--logger", "2", "--logger", "1", "--logger",
                                           "2", "--start", "-o", "logs/"});
  EXPECT_EQ(again.out,
            "logs/kernel2.tasklog: 11 entries over 0.043000 s\n"
            "logs/kernel1.tasklog: 21 entries over 0.093000 s\n");
  EXPECT_EQ(folder.Names(), files);
}

TEST(Record, MergesLoggersIntoOneFile) {
  const TempFolder folder;
  folder.Write("m.toml", Machine());
  const Result result =
      RunTasklog(folder, {"record", "m.toml", "--logger", "all", "--merge", "--start", "-o", "a"});
  EXPECT_EQ(result.exitCode, 0) << result.err;
  EXPECT_EQ(result.out, "a: 63 entries over 0.143000 s\n");
  EXPECT_EQ(folder.Names(), (Names{"a", "m.toml"}));
}

TEST(Record, AddsWhatIsNewUntilTimeIsUp) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 8));
  const Result result =
      RunTasklog(folder, {"record", "m.toml", "--start", "--for", "100ms", "--every", "10ms", "-o", "a"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");
  // The number of reads depends on this machine: 4 records each, without a gap.
  const std::string list = RunTasklog(folder, {"list", "a", "--to", "34ms"}).out;
  EXPECT_NE(list.find("0.031000  switch 3   Ctrl     Idle\n0.033000  switch 1   Idle     Ctrl\n"),
            std::string::npos)
      << list;
}

TEST(Record, SaysWhenRecordsWereLost) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("50ms", 8));
  const Result result =
      RunTasklog(folder, {"record", "m.toml", "--start", "--for", "5ms", "--every", "5ms", "-o", "a"});
  EXPECT_EQ(result.exitCode, 0);
  // Seven records fit beside the marker: from 22 ms on at the first read, from 80 ms on at the second.
  EXPECT_EQ(result.err,
            "tasklog: warning: the scheduler's logger of 'm.toml': records were lost between 0.030000 s and "
            "0.050000 s, the buffer was "
            "overwritten between two reads (a shorter --every may help)\n");
}

TEST(Record, WarnsAboutWhatWasProbablyNotMeant) {
  const TempFolder folder;
  folder.Write("m.toml", Machine());
  const Result idle = RunTasklog(folder, {"record", "m.toml", "-o", "a"});
  EXPECT_EQ(idle.exitCode, 0);
  EXPECT_EQ(idle.out, "a: 0 entries\n");
  EXPECT_EQ(idle.err, "tasklog: warning: no records were read; is the logger running? (--start starts it)\n");
  const Result suffix = RunTasklog(folder, {"record", "m.toml/@2", "--start", "-o", "a"});
  EXPECT_EQ(suffix.out, "a: 11 entries over 0.043000 s\n");
  EXPECT_EQ(suffix.err,
            "tasklog: warning: the kernel behind 'm.toml/@2' is not looked at, this reads the scheduler's "
            "logger (--logger selects a kernel's)\n");
}

TEST(Record, RefusesAPlaceThatCannotBeWrittenBeforeItReads) {
  const TempFolder folder;
  folder.Write("m.toml", Machine());
  std::filesystem::create_directory(folder.Path() / "dir");
  struct Case {
    std::vector<std::string> options;
    const char* line;
  };
  const Case cases[] = {
      {{"-o", "dir"}, "writing 'dir': it is a folder, and a file is to be written"},
      {{"-o", "new/"}, "writing 'new/': this names a folder, and a file is to be written"},
      {{"-o", "none/a"}, "creating a file in 'none': No such file or directory"},
      {{"-o", "m.toml/a"}, "writing 'm.toml/a': Not a directory"},
      {{"-o", "m.toml", "--logger", "all"},
       "writing 'm.toml': it is a file, and several loggers need a folder (--merge puts them into one file)"},
  };
  for (const Case& c : cases) {
    std::vector<std::string> arguments = {"record", "m.toml", "--for", "1h"};
    arguments.insert(arguments.end(), c.options.begin(), c.options.end());
    const Result result = RunTasklog(folder, arguments);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err, std::string("tasklog: ") + c.line + "\n");
  }
  EXPECT_EQ(folder.Names(), (Names{"dir/", "m.toml"}));
}

TEST(Record, TakesAnyOutputName) {
  const TempFolder folder;
  folder.Write("m.toml", Machine());
  for (const std::string name : {"-o", "--", "two words", "line\nbreak", "[a]"}) {
    EXPECT_EQ(RunTasklog(folder, {"record", "m.toml", "--start", "-o", name}).exitCode, 0) << name;
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / name)) << name;
  }
}

TEST(Start, StartsALoggerOrSaysWhyNot) {
  const TempFolder folder;
  folder.Write("m.toml",
               Machine() + Fault("call = \"CallProcedure\"\nname = \"Kernel.2.Logger.Start()\"\nresult = 0"));
  const Result started = RunTasklog(folder, {"start", "m.toml/@1", "--trigger", "Axis1"});
  EXPECT_EQ(started.exitCode, 0);
  EXPECT_EQ(started.out, "started the logger of 'm.toml/@1', trigger task 'Axis1'\n");
  const Result refused = RunTasklog(folder, {"start", "m.toml/@2"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.out, "");
  EXPECT_EQ(refused.err.find("tasklog: starting the logger of 'm.toml/@2': "), 0u) << refused.err;
  EXPECT_NE(refused.err.find("(the controller answered that it did not start)\n"), std::string::npos);
  const Result unreachable = RunTasklog(folder, {"record", "m.toml", "--start", "--logger", "9", "-o", "a"});
  EXPECT_EQ(unreachable.exitCode, 1);
  EXPECT_EQ(
      unreachable.err,
      "tasklog: starting the logger of kernel 9 of 'm.toml': only kernels whose number is written in the "
      "digits 1 to 8 can be started by number\n");
}

}  // namespace
