// Saves that no buffer holds whole.
#include <gtest/gtest.h>

#include "file/sectionindex.h"
#include "support/logs.h"

namespace {

LogPtr BigLog(std::uint64_t entries) {
  std::vector<RingRecord> records;
  for (std::uint64_t i = 0; i < entries; ++i)
    records.push_back({i % 7 == 0 ? 2u : 4u, 1000 + i, static_cast<std::uint32_t>(1 + i % 3)});
  LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, records)), 0u);
  return log;
}

TEST(BigSave, HoldsWhatWasLogged) {
  const LogPtr log = BigLog(60000);
  const LogPtr reread = NewLog();
  EXPECT_EQ(AppendBytes(reread.get(), Save(log.get())), 0u);
  EXPECT_TRUE(DumpEntries(reread.get()) == DumpEntries(log.get()));
  EXPECT_TRUE(Save(reread.get()) == Save(log.get()));
}

TEST(BigSave, ReportsAFullDiskAsSoonAsItIsMet) {
  EXPECT_EQ(TLTaskLogSaveAsFile(BigLog(60000).get(), "/dev/full"), TLErrFileWrite);
}

TEST(BigSave, HoldsNamesOfAnyLength) {
  for (const std::size_t length : {4087u, 4088u, 4091u, 4092u, 4095u, 4096u, 9000u}) {
    const LogPtr log = NewLog();
    const FileSection section{std::string(length, 'n'), 0, 0, {{3, 0, 0}, {1, 0, 0}}};
    log->FindOrCreateTask(section.name, 0, 0);
    EXPECT_EQ(Save(log.get()), TaskFile({.startTime = 0, .stopTime = 0, .tickRate = 0}, {section})) << length;
  }
}

// Wide numbers are for logs of 2^32 entries, which no test can hold.
TEST(BigSave, ListsTheSameEntriesByWideNumbers) {
  const LogPtr log = BigLog(100);
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
