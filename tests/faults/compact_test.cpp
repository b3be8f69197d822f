// A compact that is killed before any of its calls that change the disk: a reader finds each row once, and
// the next compact goes on. docs/fleet.md, What a reader sees.
#include <gtest/gtest.h>
#include <signal.h>

#include <map>

#include "cli/program.h"
#include "faults/calls.h"
#include "parquet/reader.h"

namespace {

using Words = std::vector<std::string>;
using Days = std::map<std::string, std::map<std::string, int>>;  // how many rows each recording has

const std::string damaged(3000, 'x');

// What one finds who reads all files that the patterns of docs/fleet.md name.
Days DaysIn(const TempFolder& folder) {
  Days days;
  for (const std::string& name : folder.Names()) {
    if (!name.ends_with(".parquet") || name.find("/.") != name.npos) continue;
    const std::string bytes = folder.Read(name);
    if (bytes == damaged) continue;
    const parquet::Reader file(bytes);
    std::size_t column = 0;
    while (file.Columns().at(column).name != "recording") ++column;
    auto& rows = days[name.substr(0, name.find("/machine="))];
    for (std::size_t group = 0; group < file.Groups(); ++group) {
      const parquet::ReadValues read = file.Read(group, column);
      for (const std::uint64_t number : read.values) ++rows[read.texts[number]];
    }
  }
  return days;
}

void Summarize(const TempFolder& folder, const std::string& day, const std::string& machine) {
  folder.Write("log", TaskFile({}, {{"A", 1, 2, {{2, 0, 1500}, {5, 0, 2000}}}}));
  const Words words{"summarize", "log", "--day", day, "--machine", machine, "-o", "fleet"};
  EXPECT_EQ(RunTasklog(folder, words).exitCode, 0);
}

int Compact(const TempFolder& folder, const Words& options) {
  Words words{"strace", "-qq", "-o", "calls"};
  words.insert(words.end(), options.begin(), options.end());
  words.insert(words.end(), {"tasklog", "compact", "fleet"});
  return Program(folder, words).Wait().exitCode;
}

class CompactFaults : public testing::Test {
 protected:
  // Two days to join, one of which has a joined file already, and one that cannot be joined.
  void SetUp() override {
    if (Program(start_, {"strace", "-qq", "-o", "calls", "true"}).Wait().exitCode != 0)
      GTEST_SKIP() << "this system does not let a test follow a program's calls";
    for (const char* machine : {"a", "b"}) Summarize(start_, "2026-11-21", machine);
    EXPECT_EQ(RunTasklog(start_, {"compact", "fleet"}).exitCode, 0);
    Summarize(start_, "2026-11-21", "c");
    for (const char* machine : {"a", "b"}) Summarize(start_, "2026-11-22", machine);
    Summarize(start_, "2026-11-20", "a");
    std::filesystem::create_directory(start_.Path() / "fleet/day=2026-11-20/machine=b");
    start_.Write("fleet/day=2026-11-20/machine=b/c.parquet", damaged);
    before_ = DaysIn(start_);
    ASSERT_EQ(before_.size(), 3u);
    EXPECT_EQ(before_["fleet/day=2026-11-21"].size(), 3u);
    const TempFolder whole;
    CopyTo(whole);
    EXPECT_EQ(Compact(whole, {}), 1);
    whole_ = whole.Names();
    calls_ = CallsBeforeOutput(whole.Read("calls"));
  }

  void CopyTo(const TempFolder& folder) const {
    std::filesystem::copy(start_.Path(), folder.Path(), std::filesystem::copy_options::recursive);
    folder.Write("calls", std::string());
  }

  // Kills at each call of each kind. Where `dayMayGo`, a day may be missing until the next compact, but
  // whole.
  void Sweep(const Words& kinds, const Words& options, bool dayMayGo) {
    int count = 0;
    for (const std::string& kind : kinds) {
      for (int at = calls_[kind] + 1; !HasFailure(); ++at, ++count) {
        SCOPED_TRACE(kind + " " + std::to_string(at));
        const TempFolder folder;
        CopyTo(folder);
        Words all{"-e", "inject=" + kind + ":signal=KILL:when=" + std::to_string(at)};
        all.insert(all.end(), options.begin(), options.end());
        if (Compact(folder, all) != -SIGKILL) break;
        const Days found = DaysIn(folder);
        for (const auto& [day, rows] : before_)
          EXPECT_TRUE(found.contains(day) ? found.at(day) == rows : dayMayGo) << day;
        EXPECT_EQ(RunTasklog(folder, {"compact", "fleet"}).exitCode, 1);
        EXPECT_EQ(DaysIn(folder), before_);
        EXPECT_EQ(folder.Names(), whole_);
      }
    }
    EXPECT_GT(count, 30);
    RecordProperty("killed", std::to_string(count));
  }

  const TempFolder start_;
  Days before_;
  Words whole_;  // what lies there when nothing happens
  std::map<std::string, int> calls_;
};

const Words changing = {"openat", "write",  "fchmod",   "fsync", "mkdir",
                        "rename", "unlink", "unlinkat", "rmdir"};

TEST_F(CompactFaults, KilledLeavesEachRowOnce) {
  Words kinds = changing;
  kinds.push_back("renameat2");
  Sweep(kinds, {}, false);
}

TEST_F(CompactFaults, KilledWhereFoldersCannotBeExchangedLosesNoRow) {
  Sweep(changing, {"-e", "inject=renameat2:error=EINVAL"}, true);
}

}  // namespace
