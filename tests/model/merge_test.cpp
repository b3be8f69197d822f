// New entries among those that a log holds: their order, the running tasks, the counts and the look-ups.
#include <gtest/gtest.h>

#include "model/model.h"
#include "support/allocations.h"
#include "support/logs.h"

namespace {

// Entries of the task Ctrl, `step` ticks apart.
std::vector<RingRecord> Row(std::uint64_t begin, std::uint64_t step, std::uint64_t count) {
  std::vector<RingRecord> records;
  for (std::uint64_t i = 0; i < count; ++i) records.push_back({4, begin + i * step, 2});
  return records;
}

// Counts are kept, not taken: they must stay those of the entries that iterators yield.
void ExpectTrueCounts(TLTaskLog log) {
  for (const char* name : {"none", "Idle", "Ctrl", "Comm", "TP1", "STKO"}) {
    const TLCategory category = CategoryNamed(log, name);
    for (std::uint32_t type = 0; type < 15; ++type) {
      const std::uint64_t mask = 1ull << type;
      EXPECT_EQ(TLTaskLogGetEntriesCount(log, category, mask, 0, UINT64_MAX),
                CountIn(DumpEntries(log, category, mask)))
          << name << ' ' << type;
    }
  }
}

TEST(Merge, ChangesTheTasksThatWereRunningBehindIt) {
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, {{4, 1000, 1},
                                                   {6, 1010, 0x9000},
                                                   {9, 1020, 1},
                                                   {2, 1030, 2},
                                                   {4, 1040, 3},
                                                   {7, 1050, 0x53544B4F}})),
            0u);
  ExpectTrueCounts(log.get());
  // Of the switch at 1040 the task before it stays as it was filled in.
  EXPECT_EQ(AppendRing(log.get(), RingWords(1005, {{4, 1005, 2}, {2, 1025, 2}, {9, 1060, 1}, {2, 1070, 1}})),
            0u);
  EXPECT_EQ(DumpEntries(log.get()),
            "1000 4 Idle -; 1005 4 Ctrl Idle; 1010 6 TP1 Ctrl; 1020 9 Idle Idle; 1025 2 Ctrl Ctrl; "
            "1030 2 Ctrl Ctrl; 1040 4 Comm Idle; 1050 7 STKO Comm; 1060 9 Idle Comm; 1070 2 Idle Comm");
  ExpectTrueCounts(log.get());
  // What was running is looked up behind an entry that does not say.
  EXPECT_EQ(AppendRing(log.get(), RingWords(1080, {{12, 1080, 2}})), 0u);
  EXPECT_EQ(AppendRing(log.get(), RingWords(1090, {{2, 1090, 2}})), 0u);
  EXPECT_EQ(DumpEntries(log.get(), nullptr, anyType, 1080), "1080 12 Ctrl Comm; 1090 2 Ctrl Comm");
  ExpectTrueCounts(log.get());
}

// The index over the times is renewed from where entries were added: behind all, between all, before all.
TEST(LookUp, IsRightInALogThatGrows) {
  const LogPtr log = NewLog();
  std::uint64_t held = 0;
  const auto grow = [&](std::uint64_t begin, std::uint64_t step, std::uint64_t size) {
    EXPECT_EQ(AppendRing(log.get(), RingWords(begin, Row(begin, step, size))), 0u);
    held += size;
    std::vector<std::uint64_t> times;
    const TLEntryIterator iterator = TLTaskLogGetEntries(log.get(), nullptr, 0, 0, UINT64_MAX);
    while (const TLEntry entry = TLEntryIteratorNext(iterator)) times.push_back(TLEntryGetTimestamp(entry));
    TLEntryIteratorDestroy(iterator);
    ASSERT_EQ(times.size(), held);
    for (std::uint64_t i = 0; i<held; i += held> 600 ? 7 : 1) {
      ASSERT_TRUE(i == 0 || times[i - 1] < times[i]) << i;
      const auto count = [&](std::uint64_t from, std::uint64_t to) {
        return TLTaskLogGetEntriesCount(log.get(), nullptr, 0, from, to);
      };
      ASSERT_EQ(count(times[i], UINT64_MAX), held - i) << held;
      ASSERT_EQ(count(times[i] + 1, UINT64_MAX), held - i - 1) << held;
      ASSERT_EQ(count(0, times[i]), i + 1) << held;
      ASSERT_EQ(count(0, times[i] - 1), i) << held;
    }
  };
  for (const std::uint64_t size : {1, 2, 15, 16, 17, 255, 256, 257, 4095, 4096, 4097, 4369})
    grow(100000 + 20 * held, 20, size - held);
  grow(100010, 20, 3000);
  grow(50000, 10, 300);
}

TEST(Counts, OfAnotherLogsCategoryAre0) {
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, {{4, 1000, 1}, {4, 1010, 2}})), 0u);
  const LogPtr other = NewLog();
  std::vector<FileSection> sections;
  for (const char* name : {"A", "B", "C", "D", "E", "F", "G"})
    sections.push_back({name, 0, 0, {{2, 0, 2000}}});
  EXPECT_EQ(AppendBytes(other.get(), TaskFile({}, sections)), 0u);
  for (const char* name : {"A", "G"})  // a place that a category of the log has, and one that none has
    EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), CategoryNamed(other.get(), name), 0, 0, UINT64_MAX), 0u);
}

TEST(Memory, IsTakenForWhatARingHoldsAndNotForItsSlots) {
  constexpr std::size_t slots = 1'000'000;
  for (const std::uint32_t filler : {0u, 0xFFFFFFFFu}) {  // unused slots as zeros or as markers
    auto words = RingWords(1000, {{4, 1000, 1}, {4, 1010, 2}, marker});
    words.resize(2 + 2 * slots, filler);
    const LogPtr log = NewLog();
    const AllocationWatch watch;
    EXPECT_EQ(AppendRing(log.get(), words), 0u);
    EXPECT_LE(watch.LargestBytes(), words.size() * sizeof words[0]) << filler;
  }
}

TEST(Memory, TakenForRecordsThatAddNothingIsGivenBack) {
  constexpr std::size_t slots = 200'000;
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, std::vector<RingRecord>(slots, {4, 1000, 1}))), 0u);
  EXPECT_EQ(DumpEntries(log.get()), "1000 4 Idle -");
  EXPECT_LT(log->entries.SpareSize(), slots / 2);
  const FileSection section{"A", 0, 0, std::vector<FileRecord>(slots, {1, 0, 5000})};
  const FileSection other{"B", 0, 0, std::vector<FileRecord>(slots - 1, {4, 0, 5000})};
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({.stopTime = 6000}, {section, other})), 0u);
  EXPECT_EQ(log->entries.size(), slots + 1);
  EXPECT_LT(log->entries.SpareSize(), slots);
}

}  // namespace
