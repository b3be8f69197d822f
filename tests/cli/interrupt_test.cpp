// Ctrl-C and its kin during a recording.
#include <gtest/gtest.h>
#include <signal.h>

#include <random>
#include <thread>

#include "cli/program.h"
#include "cli/scenarios.h"

namespace {

using Names = std::vector<std::string>;
using namespace std::chrono_literals;

const std::vector<std::string> recordForAnHour = {"tasklog", "record", "m.toml", "--start",
                                                  "--for",   "1h",     "-o",     "a"};

TEST(Interrupt, EndsTheRecordingAndSaves) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    SCOPED_TRACE(signal);
    const TempFolder folder;
    folder.Write("m.toml", SteppedScenario("20ms", 64));
    Program program(folder, recordForAnHour);
    ASSERT_TRUE(AppearsIn(folder, ".tasklog-"));
    program.Send(signal);
    const Result result = program.Wait();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out.substr(0, 3), "a: ");
    EXPECT_EQ(folder.Names(), (Names{"a", "a.json", "m.toml"}));
    EXPECT_NE(RunTasklog(folder, {"list", "a"}).out.find("0.001000  switch 3   Ctrl     Idle\n"),
              std::string::npos);
  }
}

TEST(Interrupt, LeavesNothingBehindWhenTheTargetNeverAnswers) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64) + Fault("call = \"GetBlock32\"\ndelay = \"600s\""));
  Program program(folder, recordForAnHour);
  ASSERT_TRUE(AppearsIn(folder, ".tasklog-"));
  // Of different kinds: those of one kind count as one when they come at once.
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
    program.Send(signal);
    std::this_thread::sleep_for(50ms);
  }
  // On a busy machine they come at once, and then any of them may be handled last, or before the target is
  // asked. What counts is that it ends.
  EXPECT_NE(program.Wait().exitCode, 0);
  EXPECT_EQ(folder.Names(), Names{"m.toml"});
}

TEST(Interrupt, GivesUpTheFirstReadWhenAskedTwice) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64) + Fault("call = \"GetBlock32\"\ndelay = \"1s\""));
  Program program(folder, recordForAnHour);
  ASSERT_TRUE(AppearsIn(folder, ".tasklog-"));
  program.Send(SIGINT);
  std::this_thread::sleep_for(50ms);
  program.Send(SIGTERM);
  const Result result = program.Wait();
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err,
            "tasklog: reading the scheduler's logger of 'm.toml': interrupted before the first read was "
            "complete, nothing is saved\n");
  EXPECT_EQ(folder.Names(), Names{"m.toml"});
}

// What is there was complete before; only the segment being written is lost.
TEST(Interrupt, ByKillLeavesSegmentsThatCanBeRead) {
  std::minstd_rand random(std::random_device{}());
  for (int kill = 0; kill < 12; ++kill) {
    const TempFolder folder;
    folder.Write("m.toml", SteppedScenario("20ms", 64) + SteppedKernel(1));
    Program program(folder, {"tasklog", "record", "m.toml", "--start", "--logger", "all", "--split", "2ms",
                             "--every", "1ms", "--keep", "30ms", "--for", "1h", "-o", "d"});
    ASSERT_TRUE(AppearsIn(folder, "d/scheduler.0"));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 150'000));
    program.Send(SIGKILL);
    program.Wait();
    const Result result = Program(folder, {"sh", "-c", "tasklog info d && tasklog info d/*.tasklog"}).Wait();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
  }
}

}  // namespace
