// Commands that make files of logs, on a disk that is full from any of their calls on: at the place of the
// output lies what was there before or all of the new, and nothing else is left behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "cli/program.h"
#include "faults/calls.h"

namespace {

using Words = std::vector<std::string>;

struct Job {
  const char* name;
  Words words;    // of the command
  Words outputs;  // its files
  bool isFolder;  // "out" is a new folder, so nothing was there before
};

Job ExportOf(const char* format, const Words& files) {
  Job job{format, {"export", "log", "--to", format, "-o", "out"}, {"out"}, !files.empty()};
  if (job.isFolder) job.outputs.clear();
  for (const std::string& file : files) job.outputs.push_back("out/" + file);
  return job;
}

const Job jobs[] = {
    ExportOf("csv", {}),
    ExportOf("jsonl", {}),
    ExportOf("chrome", {}),
    ExportOf("perfetto", {}),
    ExportOf("ctf", {"metadata", "stream0"}),
    ExportOf("ctf-kernel", {"metadata", "stream0"}),
    ExportOf("sqlite", {}),
    ExportOf("parquet", {"entries.parquet", "gaps.parquet", "jobs.parquet", "lanes.parquet", "runs.parquet",
                         "tasks.parquet"}),
    {"repair", {"repair", "broken", "-o", "out"}, {"out"}, false},
    {"cut", {"cut", "log", "--from", "2000", "-o", "out"}, {"out"}, false},
    {"join", {"join", "early", "late", "-o", "out"}, {"out", "out.json"}, false},
    {"plot", {"plot", "log", "-o", "out.svg"}, {"out.svg"}, false},
};

// A switch each microsecond: the exports take several writes.
Bytes LogBetween(std::uint32_t from, std::uint32_t to) {
  FileSection a{"A", 1}, b{"B", 2};
  for (std::uint32_t i = from; i < to; ++i)
    for (FileSection* section : {&a, &b})
      section->records.push_back({(i % 2 == 0) == (section == &a) ? 2u : 5u, 1, i});
  return TaskFile({.startTime = from, .stopTime = to}, {a, b});
}

// Before. Metadata comes new: what is there beside a file of another name is not theirs to write over.
std::string OldOf(const Job& job, const std::string& output) {
  return job.isFolder || output.ends_with(".json") ? "" : "old";
}

Words Contents(const TempFolder& folder, const Job& job) {
  Words contents;
  for (const std::string& output : job.outputs) contents.push_back(folder.Read(output));
  return contents;
}

Result RunJob(const TempFolder& folder, const Job& job, const Words& options) {
  static const Bytes log = LogBetween(1000, 10000);
  folder.Write("log", log);
  folder.Write("broken", Bytes(log.begin(), log.end() - 100));
  folder.Write("early", LogBetween(1000, 5000));
  folder.Write("late", LogBetween(6000, 9000));
  for (const std::string& output : job.outputs)
    if (const std::string old = OldOf(job, output); !old.empty()) folder.Write(output, old);
  Words words{"strace", "-qq", "-o", "calls"};
  words.insert(words.end(), options.begin(), options.end());
  words.push_back("tasklog");
  words.insert(words.end(), job.words.begin(), job.words.end());
  return Program(folder, words).Wait();
}

bool IsLeftOver(const std::string& name) { return name.find(".tasklog-") != name.npos; }

class DiskFull : public testing::TestWithParam<Job> {
 protected:
  void SetUp() override {
#ifdef TASKLOG_PROGRAM_SANITIZED
    GTEST_SKIP() << "a sanitizer writes on its own account; the build without does this";
#endif
    const TempFolder folder;
    if (Program(folder, {"strace", "-qq", "-o", "calls", "true"}).Wait().exitCode != 0)
      GTEST_SKIP() << "this system does not let a test follow a program's calls";
    const TempFolder whole;
    const Result result = RunJob(whole, GetParam(), {});
    if (result.err.find("neither a format") != result.err.npos) GTEST_SKIP() << "the format is not built";
    ASSERT_EQ(result.exitCode, 0) << result.err;
    whole_ = Contents(whole, GetParam());
    before_ = CallsBeforeOutput(whole.Read("calls"));
  }

  // False behind the last call of the kind. From `at` on, all of them fail.
  bool Disturb(const std::string& kind, int at) {
    const TempFolder folder;
    const Result result = RunJob(folder, GetParam(),
                                 {"-f", "--seccomp-bpf", "-e", "trace=" + kind, "-e",
                                  "inject=" + kind + ":error=ENOSPC:when=" + std::to_string(at) + "+"});
    if (folder.Read("calls").find("INJECTED") == std::string::npos) return false;
    const Words contents = Contents(folder, GetParam());
    for (std::size_t i = 0; i < whole_.size(); ++i) {
      const std::string& output = GetParam().outputs[i];
      EXPECT_TRUE(contents[i] == whole_[i] || contents[i] == OldOf(GetParam(), output)) << output;
    }
    EXPECT_TRUE(result.exitCode != 0 || contents == whole_);
    EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode;
    const Words names = folder.Names();
    EXPECT_TRUE(std::none_of(names.begin(), names.end(), IsLeftOver)) << testing::PrintToString(names);
    return true;
  }

  Words whole_;  // what there is when nothing happens
  std::map<std::string, int> before_;
};

TEST_P(DiskFull, LeavesTheOldOrTheWhole) {
  int count = 0;
  for (const char* kind : {"openat", "mkdir", "write", "pwrite64", "fchmod", "fsync", "rename"}) {
    // Each of the first calls; of many, such as those of a database, some.
    for (int at = 1; !HasFailure(); at += 1 + at / 8, ++count) {
      SCOPED_TRACE(kind + std::string(" ") + std::to_string(at));
      if (!Disturb(kind, before_[kind] + at)) break;
    }
  }
  EXPECT_GT(count, 4);
  RecordProperty("disturbed", std::to_string(count));
}

INSTANTIATE_TEST_SUITE_P(Of, DiskFull, testing::ValuesIn(jobs), [](const auto& job) {
  std::string name = job.param.name;
  std::erase(name, '-');
  return name;
});

}  // namespace
