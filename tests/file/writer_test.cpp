// Logs into files, byte for byte.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdio>
#include <memory>

#include "file/sectionindex.h"
#include "support/logs.h"

namespace {

// The log of golden/example.hex; the file given here spares what a reader would drop or turn into an entry.
LogPtr ExampleLog() {
  LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({},
                                            {{"Idle", 0, 10, {{5, 2, 2000}, {2, 1, 4000}}},
                                             {"Ctrl", 5, -1, {{2, 2, 2000}, {5, 1, 4000}}}},
                                            {{{7, 9, 3000, "TP1"}}})),
            0u);
  return log;
}

TEST(Writer, WritesTheExample) { EXPECT_EQ(Save(ExampleLog().get()), ReadHex("golden/example.hex")); }

TEST(Writer, WritesAnEmptyLog) {
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), {0}), 0u);  // takes the tick rate and nothing else
  EXPECT_EQ(Save(log.get()), ReadHex("golden/empty.hex"));
}

TEST(Writer, WritesEveryEntryTypeTheFormatHas) {
  const std::vector<RingRecord> records = {
      {4, 1000, 1}, {0, 1010, 2},      {1, 1020, 1},          {3, 1030, 2}, {5, 1040, 1},  {2, 1050, 2},
      {2, 1060, 1}, {6, 1070, 0x9000}, {7, 1080, 0x53544B4F}, {8, 1090, 2}, {14, 1100, 1}, {4, 1110, 1}};
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, records)), 0u);
  // The second testpoint of the target was never passed.
  EXPECT_EQ(Save(log.get()), ReadHex("golden/all_types.hex"));
}

TEST(Writer, CutsTheTickRateTo32Bits) {
  ScriptedTarget target;
  PutLogger(target, "Scheduler.Logger", {0});
  target.numbers["Target.Mpu.Resolution"] = 0.125;  // 8000000000 ticks per second
  const LogPtr log = NewLog();
  EXPECT_EQ(TLTaskLogAppendFromTarget(log.get(), "ctl", -1, nullptr, nullptr), 0u);
  EXPECT_EQ(Save(log.get()), TaskFile({.startTime = 0, .stopTime = 0, .tickRate = 3705032704}, {}));
}

TEST(Writer, WritesAnEmptyNameForWhatIsAboutNothing) {
  const LogPtr log = NewLog();
  const _STLEntry entries[] = {{TLLogTestpoint, 2000}, {TLLogTimingIssue, 2000}};
  log->TakeNewEntries({}, entries);
  EXPECT_EQ(Save(log.get()), TaskFile({.startTime = 0, .stopTime = 0, .tickRate = 0}, {},
                                      std::vector<FileRecord>{{3, 0, 0}, {7, 0, 2000, ""}},
                                      std::vector<FileRecord>{{3, 0, 0}, {8, 0, 2000, ""}}));
}

TEST(Writer, ReplacesALongerFile) {
  const TempFile file(Bytes(5000, 0xAA));
  EXPECT_EQ(TLTaskLogSaveAsFile(ExampleLog().get(), file.CPath()), 0u);
  EXPECT_EQ(ReadBytes(file.Path()), ReadHex("golden/example.hex"));
}

TEST(Writer, ReportsWhereItCannotWrite) {
  const TempFile pipe;
  ASSERT_EQ(mkfifo(pipe.CPath(), 0600), 0);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> reader(std::fopen(pipe.CPath(), "r+"), &std::fclose);
  ASSERT_TRUE(reader);
  const std::pair<const char*, std::uint32_t> cases[] = {
      {nullptr, TLErrFileOpen},      {"", TLErrFileOpen},
      {"/tmp", TLErrFileOpen},       {"/no such folder/log", TLErrFileOpen},
      {"/dev/full", TLErrFileWrite}, {pipe.CPath(), TLErrFileWrite},  // has no positions
  };
  const LogPtr log = ExampleLog();
  for (const auto& [path, status] : cases) {
    EXPECT_EQ(TLTaskLogSaveAsFile(log.get(), path), status) << (path ? path : "null");
  }
}

TEST(Writer, WritesNamesOfAnyLength) {
  for (const std::size_t length : {4087u, 4088u, 4091u, 4092u, 4095u, 4096u, 9000u}) {
    const LogPtr log = NewLog();
    const FileSection section{std::string(length, 'n'), 0, 0, {{3, 0, 0}, {1, 0, 0}}};
    log->FindOrCreateTask(section.name, 0, 0);
    EXPECT_EQ(Save(log.get()), TaskFile({.startTime = 0, .stopTime = 0, .tickRate = 0}, {section})) << length;
  }
}

// Wide numbers are for logs of 2^32 entries, which no test can hold.
TEST(SectionIndex, ListsTheSameEntriesByWideNumbers) {
  std::vector<RingRecord> records;
  for (std::uint32_t i = 0; i < 100; ++i) records.push_back({i % 7 == 0 ? 2u : 4u, 1000 + i, 1 + i % 3});
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, records)), 0u);
  const SectionIndex<u32> narrow(*log);
  const SectionIndex<u64> wide(*log);
  for (const char* name : {"Idle", "Ctrl", "Comm"}) {
    const _STLCategory* task = CategoryNamed(log.get(), name);
    std::vector<const _STLEntry*> ofNarrow, ofWide;
    narrow.ForEach(*task, [&](const _STLEntry& entry) { ofNarrow.push_back(&entry); });
    wide.ForEach(*task, [&](const _STLEntry& entry) { ofWide.push_back(&entry); });
    EXPECT_GT(ofNarrow.size(), 30u);
    EXPECT_EQ(ofNarrow, ofWide);
  }
}

}  // namespace
