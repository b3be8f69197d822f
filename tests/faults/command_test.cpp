// A recording that is killed before any of its calls that change the disk, or of whose calls any one fails:
// at the place of its output lies what was there before or all of what it recorded, never anything else.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "cli/program.h"
#include "cli/scenarios.h"
#include "faults/calls.h"

namespace {

// What stands on the disk does not depend on a sanitizer, which makes starting a program slow. What the
// command does about calls that fail may.
#ifdef TASKLOG_PROGRAM_SANITIZED
constexpr int stride = 5;
#else
constexpr int stride = 1;
#endif

using Words = std::vector<std::string>;

// One command, and the files that it writes.
struct Recording {
  Words arguments;
  Words files;
  bool intoNewFolder;
};

const Recording recordings[] = {
    {{"-o", "a"}, {"a"}, false},
    {{"--logger", "all", "-o", "out"}, {"out/kernel1.tasklog", "out/scheduler.tasklog"}, false},
    {{"--logger", "all", "-o", "out"}, {"out/kernel1.tasklog", "out/scheduler.tasklog"}, true},
};

Words Contents(const TempFolder& folder, const Recording& recording) {
  Words contents;
  for (const std::string& file : recording.files) contents.push_back(folder.Read(file));
  return contents;
}

// Runs it under strace, whose options say what happens to its calls. What strace tells lies in "calls".
Result Record(const TempFolder& folder, const Recording& recording, const Words& options) {
  folder.Write("m.toml", SteppedScenario("20ms", 64) + SteppedKernel(1));
  for (const std::string& file : recording.files) {
    if (recording.intoNewFolder) break;
    std::filesystem::create_directories((folder.Path() / file).parent_path());
    folder.Write(file, std::string("old"));
  }
  Words words{"env",  "ASAN_OPTIONS=detect_leaks=0", "strace", "-qq", "-o",
              "calls"};  // leak checkers trace, too
  words.insert(words.end(), options.begin(), options.end());
  words.insert(words.end(), {"tasklog", "record", "m.toml", "--start"});
  words.insert(words.end(), recording.arguments.begin(), recording.arguments.end());
  return Program(folder, words).Wait();
}

bool LeftUnfinished(const TempFolder& folder) {
  const Words names = folder.Names();
  return std::any_of(names.begin(), names.end(),
                     [](const auto& name) { return name.find(".tasklog-") != name.npos; });
}

class CommandFaults : public testing::Test {
 protected:
  void SetUp() override {
    const TempFolder folder;
    if (Program(folder, {"strace", "-qq", "-o", "calls", "true"}).Wait().exitCode != 0) {
      GTEST_SKIP() << "this system does not let a test follow a program's calls";
    }
    for (const Recording& recording : recordings) {
      const TempFolder whole;
      ASSERT_EQ(Record(whole, recording, {}).exitCode, 0);
      whole_.push_back(Contents(whole, recording));
      before_.push_back(CallsBeforeOutput(whole.Read("calls")));
    }
  }

  // Disturbs each call of each kind from the creation of the output on.
  template <class Check>
  void Sweep(const Words& kinds, const std::string& disturbance, Check check) {
    int count = 0;
    for (std::size_t i = 0; i < std::size(recordings); ++i) {
      for (const std::string& kind : kinds) {
        for (int at = before_[i][kind] + 1; !HasFailure(); at += stride, ++count) {
          SCOPED_TRACE(kind + " " + std::to_string(at) + " of recording " + std::to_string(i));
          const TempFolder folder;
          Words options{"-e", "trace=" + kind, "-e",
                        "inject=" + kind + ":" + disturbance + ":when=" + std::to_string(at)};
          // Stops at no other calls, but then strace sends no signals.
          if (disturbance.starts_with("error")) options.insert(options.end(), {"-f", "--seccomp-bpf"});
          const Result result = Record(folder, recordings[i], options);
          const std::string calls = folder.Read("calls");
          if (calls.find("INJECTED") == calls.npos && calls.find("killed by") == calls.npos) break;
          ExpectOldOrNew(recordings[i], Contents(folder, recordings[i]), whole_[i], result.exitCode);
          check(kind, folder, result);
        }
      }
    }
    EXPECT_GT(count, 20);
    RecordProperty("disturbed", std::to_string(count));
  }

  static void ExpectOldOrNew(const Recording& recording, const Words& contents, const Words& whole,
                             int exitCode) {
    const Words old(whole.size(), recording.intoNewFolder ? "" : "old");
    if (exitCode == 0) {
      EXPECT_EQ(contents, whole);
    } else if (recording.intoNewFolder) {
      EXPECT_TRUE(contents == whole || contents == old);
    }
    for (std::size_t i = 0; i < whole.size(); ++i) {
      EXPECT_TRUE(contents[i] == whole[i] || contents[i] == old[i]) << recording.files[i];
    }
  }

  std::vector<Words> whole_;  // what each recording leaves when nothing happens
  std::vector<std::map<std::string, int>> before_;
};

TEST_F(CommandFaults, KilledLeavesOldOrNewFiles) {
  if (stride > 1) GTEST_SKIP() << "the build without sanitizers does this";
  Sweep({"openat", "write", "fchmod", "chmod", "fsync", "rename", "mkdir", "unlink", "rmdir", "flock"},
        "signal=KILL",
        [](const auto&, const auto&, const Result& result) { EXPECT_EQ(result.exitCode, -SIGKILL); });
}

TEST_F(CommandFaults, OfOneCallLeaveOldOrNewFilesAndNothingElse) {
  Words kinds{"openat", "lseek", "fchmod", "chmod", "fsync", "rename", "mkdir", "unlink", "rmdir", "flock"};
  // A sanitizer reads and writes on its own account, and gives up when that fails.
  if (stride == 1) kinds.insert(kinds.end(), {"read", "write", "close"});
  Sweep(kinds, "error=ENOSPC", [](const std::string& kind, const TempFolder& folder, const Result& result) {
    EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode;
    EXPECT_TRUE(kind == "unlink" || kind == "rmdir" || !LeftUnfinished(folder));
  });
}

// What is not on the disk before the rename is lost when the power goes right behind it.
TEST_F(CommandFaults, FindTheContentOnTheDiskBeforeItIsInPlace) {
  for (const Recording& recording : recordings) {
    const TempFolder folder;
    EXPECT_EQ(Record(folder, recording, {"-e", "inject=fsync:error=EIO:when=1"}).exitCode, 1);
    Record(folder, recording, {"-e", "trace=write,fsync,rename"});
    std::string order;  // w, f and r for each
    std::istringstream calls(folder.Read("calls"));
    for (std::string line; std::getline(calls, line);) order += line[0];
    const std::size_t rename = order.find('r');
    ASSERT_NE(rename, order.npos);
    EXPECT_GE(std::count(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(rename), 'f'),
              std::ssize(recording.files));
    EXPECT_LT(order.find('f', order.rfind('w', rename)), rename);
    EXPECT_NE(order.find('f', order.rfind('r')), order.npos);
  }
}

// One command waits between its two files for another one, which must not come in between.
TEST_F(CommandFaults, ThatKeepACommandWaitingKeepOthersOutOfItsFolder) {
  const TempFolder folder;
  const Recording& recording = recordings[1];
  folder.Write("other.toml", SteppedScenario("40ms", 64) + SteppedKernel(1));
  Program other(folder, {"sh", "-c",
                         "while ! grep -q rename calls; do sleep 0.01; done\n"
                         "exec tasklog record other.toml --start --logger all -o out"});
  EXPECT_EQ(Record(folder, recording, {"-e", "trace=rename", "-e", "inject=rename:delay_enter=300000:when=2"})
                .exitCode,
            0);
  ASSERT_EQ(other.Wait().exitCode, 0);
  const Words both = Contents(folder, recording);
  ASSERT_EQ(RunTasklog(folder, {"record", "other.toml", "--start", "--logger", "all", "-o", "out"}).exitCode,
            0);
  EXPECT_EQ(both, Contents(folder, recording));
}

}  // namespace
