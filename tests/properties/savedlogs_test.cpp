// What a file carries and what it does not: docs/file-format.md, What a file cannot carry.
#include "randomlogs.h"

namespace {

constexpr bool IsSwitch(ETLLogType type) { return type < 6 && type != TLLogTaskEvent; }

LogPtr ReadBack(const Bytes& file) {
  LogPtr log = NewLog();
  RC_ASSERT(AppendBytes(log.get(), file) == 0u);
  return log;
}

// Switches between different tasks, events, testpoints and timing issues, no two at one time, that begin with
// a plain switch and end with any.
std::vector<RingRecord> CarriedRecords() {
  std::vector<RingRecord> records = *AnyRecords(1'000'000, 1);
  records.insert(records.begin(), {TLLogSwitch4, 1'000'000, 1});
  records.push_back({TLLogSwitch0, records.back().tick + 1, 0});
  std::uint32_t running = 1;
  for (RingRecord& record : records) {
    record.type %= 8;
    if (record.type == TLLogTestpoint) record.id = 0x9000;
    if (record.type == TLLogTimingIssue) record.id = 0x53544B4F;
    if (record.type < 6) record.id = 1 + record.id % 3;
    const bool stays = IsSwitch(record.type) && record.id == running && &record != &records.front();
    if (stays) record.id = 1 + running % 3;
    if (IsSwitch(record.type)) running = record.id;
  }
  return records;
}

RC_GTEST_PROP(SavedLogs, AreReadBackWholeWhereFilesCarryThem, ()) {
  const std::vector<RingRecord> records = CarriedRecords();
  const LogPtr log = NewLog();
  RC_ASSERT(AppendRing(log.get(), RingWords(1'000'000, records)) == 0u);
  const LogPtr readBack = ReadBack(Save(log.get()));
  RC_ASSERT(DumpEntries(readBack.get()) == DumpEntries(log.get()));
  RC_ASSERT(DumpTimes(readBack.get()) == DumpTimes(log.get()));
}

RC_GTEST_PROP(SavedLogs, AreTheSameBytesEachTime, ()) {
  const auto words = *AnyWords();
  const LogPtr log = NewLog();
  const LogPtr other = NewLog();
  AppendRing(log.get(), words);
  AppendRing(other.get(), words);
  const Bytes saved = Save(log.get());
  RC_ASSERT(Save(log.get()) == saved);
  RC_ASSERT(Save(other.get()) == saved);
}

TEST(SavedLogs, LoseWhatThePageSays) {
  const struct {
    const char* name;
    std::vector<RingRecord> records;
    const char* before;
    const char* after;
  } cases[] = {
      {"types from 8",
       {{4, 1000, 1}, {9, 1010, 2}, {4, 1020, 2}},
       "1000 4 Idle -; 1010 9 Ctrl Idle; 1020 4 Ctrl Idle",
       "1000 4 Idle -; 1020 4 Ctrl Idle"},
      {"the last testpoint at the stop time",
       {{4, 1000, 1}, {6, 1010, 0x9000}, {6, 1020, 0x9000}},
       "1000 4 Idle -; 1010 6 TP1 Idle; 1020 6 TP1 Idle",
       "1000 4 Idle -; 1010 6 TP1 Idle"},
      {"the type of the first switch",
       {{0, 1000, 1}, {5, 1010, 2}},
       "1000 0 Idle -; 1010 5 Ctrl Idle",
       "1000 4 Idle -; 1010 5 Ctrl Idle"},
      {"the type of a switch to the same task",
       {{4, 1000, 1}, {5, 1010, 1}, {3, 1020, 2}},
       "1000 4 Idle -; 1010 5 Idle Idle; 1020 3 Ctrl Idle",
       "1000 4 Idle -; 1010 4 Idle Idle; 1020 3 Ctrl Idle"},
      {"the order at one time",
       {{7, 1000, 0x53544B4F}, {6, 1000, 0x9000}, {2, 1000, 1}, {4, 1010, 1}},
       "1000 7 STKO -; 1000 6 TP1 -; 1000 2 Idle -; 1010 4 Idle -",
       "1000 2 Idle -; 1000 6 TP1 -; 1000 7 STKO -; 1010 4 Idle -"},
  };
  for (const auto& c : cases) {
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendRing(log.get(), RingWords(1000, c.records)), 0u);
    EXPECT_EQ(DumpEntries(log.get()), c.before) << c.name;
    EXPECT_EQ(DumpEntries(ReadBack(Save(log.get())).get()), c.after) << c.name;
  }
  // The ids of tasks that are in slot 0 of no entry, and testpoints without entries.
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, {{6, 1000, 0x9000}, {4, 1010, 2}})), 0u);
  EXPECT_EQ(DumpCategories(ReadBack(Save(log.get())).get()),
            "task Idle 0 10 id 0; task Ctrl 5 -1 id 2; task Comm 6 20 id 0; testpoint TP1 id 36864");
}

TEST(SavedLogs, GainAnEntryForATaskThatIsFirstSeenWhenItStops) {
  const LogPtr log = ReadBack(TaskFile({}, {{"A", 0, 0, {{5, 0, 2000}}}}));
  EXPECT_EQ(DumpEntries(log.get()), "2000 0 - A");
  EXPECT_EQ(DumpEntries(ReadBack(Save(log.get())).get()), "1000 4 A -; 2000 0 - A");
}

}  // namespace
