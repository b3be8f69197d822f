// Recording when something goes wrong: what was recorded is kept, what was there before is not touched.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "cli/program.h"
#include "cli/scenarios.h"

namespace {

using Names = std::vector<std::string>;

std::string Failing(const std::string& call, int from, const std::string& more = {}) {
  return Fault("call = \"" + call + "\"\nstatus = 4711\ntext = \"The line is dead\"\nfrom = " +
               std::to_string(from) + "\n" + more);
}

TEST(RecordFaults, LeaveThePlaceAsItWasWhenNothingWasRead) {
  for (const char* call : {"GetBlock32", "GetVariable", "CallProcedure"}) {
    SCOPED_TRACE(call);
    const TempFolder folder;
    folder.Write("m.toml", SteppedScenario("20ms", 64) + Failing(call, 1));
    folder.Write("a", std::string("old"));
    const Result result = RunTasklog(folder, {"record", "m.toml", "--start", "--for", "1h", "-o", "a"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err.find(
                  "tasklog: " +
                  std::string(call[0] == 'C' ? "starting the logger" : "reading the scheduler's logger") +
                  " of 'm.toml': The line is dead"),
              0u)
        << result.err;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
    EXPECT_EQ(folder.Read("a"), "old");
    EXPECT_EQ(folder.Names(), (Names{"a", "m.toml"}));
  }
}

TEST(RecordFaults, EndARecordingAndKeepWhatWasRead) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64) + Failing("GetBlock32", 3));
  const Result result =
      RunTasklog(folder, {"record", "m.toml", "--start", "--for", "1h", "--every", "1ms", "-o", "a"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.out, "a: 9 entries over 0.033000 s\n");
  EXPECT_EQ(result.err.find("tasklog: reading the scheduler's logger of 'm.toml': The line is dead"), 0u)
      << result.err;
  EXPECT_NE(result.err.find("(the recording ends here)\n"), std::string::npos) << result.err;
}

TEST(RecordFaults, OfTheNamesAreSaidOnceAndFail) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64) + Failing("DbgTasksList", 1));
  const Result result =
      RunTasklog(folder, {"record", "m.toml", "--start", "--for", "20ms", "--every", "1ms", "-o", "a"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err.find("tasklog: warning: reading the names of tasks and testpoints for the scheduler's "
                            "logger of 'm.toml': The line is dead"),
            0u)
      << result.err;
  EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1);
  EXPECT_NE(RunTasklog(folder, {"list", "a", "--limit", "2"})
                .out.find("0.001000  switch 3   0x00010001  0x00010002\n"),
            std::string::npos);
}

// A target that keeps no names does what it can.
TEST(RecordFaults, OfNamesThatATargetDoesNotKeepAreNone) {
  const TempFolder folder;
  folder.Write("m.toml",
               SteppedScenario("20ms", 64) + Fault("call = \"DbgTasksList\"\nstatus = \"no variable\""));
  const Result result = RunTasklog(folder, {"record", "m.toml", "--start", "-o", "a"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_NE(result.err.find("(they are named by their ids)\n"), std::string::npos) << result.err;
}

TEST(RecordFaults, OfALoggerThatIsNotThereGiveAHint) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64));
  const Result result = RunTasklog(folder, {"record", "m.toml", "--logger", "7", "-o", "a"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err.find("tasklog: reading the logger of kernel 7 of 'm.toml': "), 0u);
  EXPECT_NE(result.err.find("(--logger all takes the loggers that the target has)\n"), std::string::npos);
  EXPECT_EQ(folder.Names(), Names{"m.toml"});
}

// Limits the size of the files that the programs started meanwhile may write: a disk that is full.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    ::getrlimit(RLIMIT_FSIZE, &before_);
    rlimit limit = before_;
    limit.rlim_cur = bytes;
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() { ::setrlimit(RLIMIT_FSIZE, &before_); }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  rlimit before_{};
};

TEST(RecordFaults, OfAFullDiskKeepTheOldFile) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64));
  ASSERT_EQ(RunTasklog(folder, {"record", "m.toml", "--start", "-o", "a"}).exitCode, 0);
  const std::string whole = folder.Read("a");
  for (const rlim_t size : {rlim_t{0}, rlim_t{1}, static_cast<rlim_t>(whole.size() - 1)}) {
    SCOPED_TRACE(size);
    folder.Write("a", std::string("old"));
    Result result{};
    {
      // stderr goes into a file, too, and must have room for its line.
      const FileSizeLimit limit(size);
      result = RunTasklog(folder, {"record", "m.toml", "--start", "-o", "a"});
    }
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(folder.Read("a"), "old");
    EXPECT_EQ(folder.Names(), (Names{"a", "m.toml"}));
  }
}

}  // namespace
