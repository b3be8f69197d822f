// Many records of one time, where entries are no longer compared one by one: what a reading adds must not
// depend on how many there are.
#include <gtest/gtest.h>

#include "support/logs.h"

namespace {

constexpr std::size_t crowds[] = {0, 60, 63, 64, 65, 100, 500};

// Records of tasks that nobody knows, all at 1000.
std::vector<RingRecord> Crowd(std::size_t count) {
  std::vector<RingRecord> records;
  for (std::size_t i = 0; i < count; ++i) records.push_back({2, 1000, static_cast<std::uint32_t>(5000 + i)});
  return records;
}

std::vector<RingRecord> With(std::vector<RingRecord> records, const std::vector<RingRecord>& more) {
  records.insert(records.end(), more.begin(), more.end());
  return records;
}

void ExpectEnd(TLTaskLog log, std::size_t crowd, const std::string& end) {
  const std::string dump = DumpEntries(log);
  EXPECT_EQ(CountIn(dump), crowd + CountIn(end));
  EXPECT_TRUE(dump.ends_with(end)) << dump.substr(dump.size() - std::min(dump.size(), end.size()));
}

TEST(CrowdedTime, AddsEachRecordOnce) {
  const std::vector<RingRecord> once = {{7, 1000, 0x53544B4F}, {7, 1000, 3}, {4, 1000, 1},
                                        {4, 1000, 2},          {2, 1000, 1}, {6, 1000, 0x9000}};
  const std::string expected =
      "1000 7 STKO -; 1000 7 0x00000003 -; 1000 4 Idle -; 1000 4 Ctrl Idle; 1000 2 Idle Ctrl; "
      "1000 6 TP1 Ctrl";
  for (const std::size_t crowd : crowds) {
    SCOPED_TRACE(crowd);
    const auto twice = RingWords(1000, With(With(Crowd(crowd), once), With(once, Crowd(crowd))));
    const LogPtr log = NewLog();
    for (int reading = 1; reading <= 2; ++reading) {
      EXPECT_EQ(AppendRing(log.get(), twice), 0u);
      ExpectEnd(log.get(), crowd, expected);
    }
    // A code that is not printable goes by its name, whose first characters are a code too.
    EXPECT_EQ(AppendRing(log.get(), RingWords(1000, {{7, 1000, 0x30783030}, {7, 1000, 4}, {7, 1000, 3}})),
              0u);
    ExpectEnd(log.get(), crowd, expected + "; 1000 7 0x00000004 Ctrl");
    // Known, but from another time.
    EXPECT_EQ(AppendRing(log.get(), RingWords(999, {{7, 999, 5}})), 0u);
    EXPECT_EQ(AppendRing(log.get(), RingWords(1000, {{7, 1000, 5}})), 0u);
    ExpectEnd(log.get(), crowd + 1, expected + "; 1000 7 0x00000004 Ctrl; 1000 7 0x00000005 Ctrl");
  }
}

TEST(CrowdedTime, IsOneOfSeveralTimes) {
  for (const std::size_t crowd : crowds) {
    SCOPED_TRACE(crowd);
    const auto records = With(With(Crowd(crowd), {{4, 1000, 1}, {4, 1001, 1}, {4, 1001, 1}}),
                              {marker, {4, 999, 1}, {4, 1000, 2}, {4, 1000, 1}});
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendRing(log.get(), RingWords(1000, records)), 0u);
    const std::string dump = DumpEntries(log.get());
    EXPECT_EQ(CountIn(dump), crowd + 4);
    EXPECT_TRUE(dump.starts_with("999 4 Idle -; 1000 4 Ctrl Idle")) << dump.substr(0, 50);
    EXPECT_TRUE(dump.ends_with("1000 4 Idle Ctrl; 1001 4 Idle Idle")) << dump.substr(dump.size() - 50);
  }
}

// The task that a file does not name counts as id 0.
TEST(CrowdedTime, TakesAnEmptySlotForId0) {
  for (const std::size_t count : {1u, 70u}) {
    const FileSection section{"File", 1, 2, std::vector<FileRecord>(count, {5, 0, 1500})};
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, {section})), 0u);
    EXPECT_EQ(AppendRing(log.get(), RingWords(1500, {{0, 1500, 0}, {2, 1500, 0}, {0, 1500, 1}})), 0u);
    ExpectEnd(log.get(), count - 1, "1500 0 - File; 1500 2 File -; 1500 0 Idle -");
  }
}

// A task called like the placeholder of another id takes that id over, and loses its own.
TEST(CrowdedTime, FollowsAnIdThatChanges) {
  for (const std::size_t crowd : crowds) {
    SCOPED_TRACE(crowd);
    ScriptedTarget target;
    target.tasks = {{9, "0x00000005", -1, 7u << 16}};
    const LogPtr log = NewLog();
    const auto records =
        With(Crowd(crowd), {{4, 1000, 9}, {4, 1000, 5}, {4, 1000, 9}, {4, 1000, 5}, {4, 1000, 9}});
    EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, records)), 0u);
    ExpectEnd(log.get(), crowd,
              "1000 4 0x00000005 -; 1000 4 0x00000005 0x00000005; 1000 4 0x00000009 0x00000005");
  }
}

}  // namespace
