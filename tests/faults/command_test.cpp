// A recording that is killed before any of its calls into the system, or of whose calls any one fails: at the
// place of its output lies what was there before or all of what it recorded, never anything else.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <set>

#include "cli/scenarios.h"
#include "tracedprogram.h"

namespace {

// What stands on the disk does not depend on a sanitizer, which makes starting a program slow.
#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t stride = 4;
#else
constexpr std::size_t stride = 1;
#endif

using Arguments = std::vector<std::string>;

// One command, and the files that it writes.
struct Recording {
  const char* name;
  Arguments arguments;
  std::vector<std::string> files;
  bool intoNewFolder;
};

const Recording recordings[] = {
    {"a file", {"record", "m.toml", "--start", "-o", "a"}, {"a"}, false},
    {"a folder that is there",
     {"record", "m.toml", "--start", "--logger", "all", "-o", "out"},
     {"out/kernel1.tasklog", "out/scheduler.tasklog"},
     false},
    {"a new folder",
     {"record", "m.toml", "--start", "--logger", "all", "-o", "out"},
     {"out/kernel1.tasklog", "out/scheduler.tasklog"},
     true},
};

std::vector<std::string> Contents(const TempFolder& folder, const Recording& recording) {
  std::vector<std::string> contents;
  for (const std::string& file : recording.files) contents.push_back(folder.Read(file));
  return contents;
}

// The place as a user left it, with an older recording.
void Prepare(const TempFolder& folder, const Recording& recording) {
  folder.Write("m.toml", SteppedScenario("20ms", 64) + SteppedKernel(1));
  if (recording.intoNewFolder) return;
  for (const std::string& file : recording.files) {
    std::filesystem::create_directories((folder.Path() / file).parent_path());
    folder.Write(file, std::string("old"));
  }
}

// Expects each file to be old or new: as many new ones as were renamed, or all with a new folder.
void ExpectOldOrNew(const TempFolder& folder, const Recording& recording,
                    const std::vector<std::string>& whole, int renames) {
  const std::vector<std::string> contents = Contents(folder, recording);
  int replaced = 0;
  for (std::size_t i = 0; i < contents.size(); ++i) {
    const bool isNew = contents[i] == whole[i];
    replaced += isNew;
    EXPECT_TRUE(isNew || contents[i] == (recording.intoNewFolder ? "" : "old")) << recording.files[i];
  }
  EXPECT_EQ(replaced, recording.intoNewFolder ? 2 * renames : renames);
}

bool IsUnfinished(const std::string& name) { return name.find(".tasklog-") != std::string::npos; }

// A recording as it goes when nothing disturbs it, and with each of its calls disturbed.
class Disturbed {
 public:
  explicit Disturbed(const Recording& recording) : recording_(recording) {
    const TempFolder folder;
    Prepare(folder, recording_);
    const TracedResult result = RunTraced(folder, recording_.arguments);
    EXPECT_EQ(result.exitCode, 0);
    calls_ = result.calls;
    whole_ = Contents(folder, recording_);
    for (const std::string& content : whole_) EXPECT_GT(content.size(), 100u);
  }
  const std::vector<std::string>& Calls() const { return calls_; }

  // Ends it before a call. What it leaves must not be in the way of the next one.
  void Kill(std::size_t at) const {
    SCOPED_TRACE(testing::Message() << recording_.name << ", killed before " << calls_[at - 1] << ' ' << at);
    const TempFolder folder;
    EXPECT_EQ(Run(folder, Disturbance::killed, at).exitCode, -SIGKILL);
    EXPECT_EQ(RunTasklog(folder, recording_.arguments).exitCode, 0);
    EXPECT_EQ(Contents(folder, recording_), whole_);
  }

  // It goes on behind a call that failed: it removes what is unfinished and says by its exit code when files
  // are not in their places.
  void Fail(std::size_t at) const {
    SCOPED_TRACE(testing::Message() << recording_.name << ", failing " << calls_[at - 1] << ' ' << at);
    const TempFolder folder;
    const TracedResult result = Run(folder, Disturbance::callFails, at);
    const int renames = recording_.intoNewFolder ? 1 : static_cast<int>(whole_.size());
    EXPECT_TRUE(result.exitCode == 1 || (result.exitCode == 0 && result.renames == renames))
        << result.exitCode;
    const std::vector<std::string> names = folder.Names();
    const bool removes = calls_[at - 1] == "unlink" || calls_[at - 1] == "rmdir";
    EXPECT_TRUE(removes || std::none_of(names.begin(), names.end(), IsUnfinished));
  }

 private:
  TracedResult Run(const TempFolder& folder, Disturbance disturbance, std::size_t at) const {
    Prepare(folder, recording_);
    const TracedResult result = RunTraced(folder, recording_.arguments, disturbance, at);
    ExpectOldOrNew(folder, recording_, whole_, result.renames);
    return result;
  }

  const Recording& recording_;
  std::vector<std::string> calls_;
  std::vector<std::string> whole_;  // what it leaves
};

class CommandFaults : public testing::Test {
 protected:
  void SetUp() override {
    if (!CanTrace()) GTEST_SKIP() << "this system does not let a test follow a program's calls";
  }
};

TEST_F(CommandFaults, KilledLeavesOldOrNewFiles) {
  const std::set<std::string> idle = {"read", "seek", "stat", "close"};  // change nothing on the disk
  std::size_t count = 0;
  for (const Recording& recording : recordings) {
    const Disturbed run(recording);
    for (std::size_t at = 1; at <= run.Calls().size() && !HasFailure(); at += stride) {
      if (idle.contains(run.Calls()[at - 1])) continue;
      run.Kill(at);
      ++count;
    }
  }
  EXPECT_GT(count, 0u);
  RecordProperty("killed", std::to_string(count));
}

TEST_F(CommandFaults, OfOneCallLeaveOldOrNewFiles) {
  std::size_t count = 0;
  for (const Recording& recording : recordings) {
    const Disturbed run(recording);
    for (std::size_t at = 1; at <= run.Calls().size() && !HasFailure(); at += stride, ++count) run.Fail(at);
  }
  EXPECT_GT(count, 0u);
  RecordProperty("callsFailed", std::to_string(count));
}

// What is not on the disk before the rename is lost when the power goes right behind it.
TEST_F(CommandFaults, FindTheContentOnTheDiskBeforeItIsInPlace) {
  for (const Recording& recording : recordings) {
    const Disturbed run(recording);
    const auto rename = std::find(run.Calls().begin(), run.Calls().end(), "rename");
    ASSERT_NE(rename, run.Calls().end());
    EXPECT_GE(std::count(run.Calls().begin(), rename, "sync"), std::ssize(recording.files));
    const auto lastWrite = std::find(std::reverse_iterator(rename), run.Calls().rend(), "write").base();
    EXPECT_NE(std::find(lastWrite, rename, "sync"), rename);
    EXPECT_NE(std::find(rename, run.Calls().end(), "sync"), run.Calls().end());
  }
}

}  // namespace
