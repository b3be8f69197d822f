// Many records of one time, where entries are no longer compared one by one, and many ids: what a reading
// adds must not depend on how many there are.
#include <gtest/gtest.h>

#include <cstdio>

#include "support/logs.h"
#include "target/damagedrings.h"

namespace {

constexpr std::size_t crowds[] = {0, 60, 63, 64, 65, 500};

using Records = std::vector<RingRecord>;

// Events of tasks that nobody knows, all at one time, and what else is to follow them.
Records Crowd(std::size_t count, std::initializer_list<Records> more, std::uint64_t time = 1000) {
  Records records;
  for (std::size_t i = 0; i < count; ++i) records.push_back({2, time, static_cast<std::uint32_t>(5000 + i)});
  for (const Records& part : more) records.insert(records.end(), part.begin(), part.end());
  return records;
}

void ExpectEnd(TLTaskLog log, std::size_t crowd, const std::string& end) {
  const std::string dump = DumpEntries(log);
  EXPECT_EQ(CountIn(dump), crowd + CountIn(end));
  EXPECT_TRUE(dump.ends_with(end)) << dump.substr(dump.size() - std::min(dump.size(), end.size()));
}

TEST(CrowdedTime, AddsEachRecordOnce) {
  const Records once = {
      {7, 1000, 0x53544B4F}, {7, 1000, 3},      {4, 1000, 1},         {4, 1000, 2},
      {2, 1000, 1},          {6, 1000, 0x9000}, {2, 1000, 0x53544B4F}};  // an id like the code of the issue
  const std::string expected =
      "1000 7 STKO -; 1000 7 0x00000003 -; 1000 4 Idle -; 1000 4 Ctrl Idle; 1000 2 Idle Ctrl; "
      "1000 6 TP1 Ctrl; 1000 2 0x53544B4F Ctrl";
  for (const std::size_t crowd : crowds) {
    SCOPED_TRACE(crowd);
    const auto twice = RingWords(1000, Crowd(crowd, {once, once, Crowd(crowd, {})}));
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
    const Records before = Crowd(crowd, {}, 998);
    const Records after = Crowd(crowd, {}, 1001);
    const auto records = Crowd(crowd, {{{4, 1000, 1}},
                                       after,
                                       {{4, 1001, 1}, {4, 1001, 1}, marker},
                                       before,
                                       {{4, 999, 1}, {4, 1000, 2}, {4, 1000, 1}}});
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendRing(log.get(), RingWords(1000, records)), 0u);
    const std::string dump = DumpEntries(log.get());
    EXPECT_EQ(CountIn(dump), 3 * crowd + 4);
    EXPECT_NE(dump.find("999 4 Idle -; 1000 4 Ctrl Idle"), dump.npos) << dump.substr(0, 50);
    EXPECT_TRUE(dump.ends_with("1001 4 Idle Idle")) << dump.substr(dump.size() - 50);
    // All of them again, in another order, behind a new record of either lap.
    Records again = {{6, 1000, 0x9000}};
    again.insert(again.end(), after.rbegin(), after.rend());
    again.push_back(marker);
    again.insert(again.end(), before.rbegin(), before.rend());
    again.push_back({6, 999, 0x9000});
    EXPECT_EQ(AppendRing(log.get(), RingWords(1000, again)), 0u);
    EXPECT_EQ(CountIn(DumpEntries(log.get())), 3 * crowd + 6);
  }
}

// With each record as a crowd of its own.
TEST(CrowdedTime, LiesAnywhereInADamagedRing) {
  const struct {
    std::size_t entries;
    Records cells;
  } rings[] = {{7, RisesInPreviousLap()}, {8, RisesIntoCurrentLap()}};
  for (const auto& [entries, cells] : rings) {
    for (const std::size_t crowd : crowds) {
      SCOPED_TRACE(crowd);
      Records records;
      for (const RingRecord& cell : cells)
        for (std::uint32_t i = 0; i == 0 || (i <= crowd && cell.type != marker.type); ++i)
          records.push_back({cell.type, cell.tick, cell.id + 10 * i});
      const LogPtr log = NewLog();
      for (int reading = 1; reading <= 2; ++reading) {
        EXPECT_EQ(AppendRing(log.get(), RingWords(damagedReferenceTime, records)), 0u);
        EXPECT_EQ(CountIn(DumpEntries(log.get())), entries * (crowd + 1));
      }
    }
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
        Crowd(crowd, {{{4, 1000, 9}, {4, 1000, 5}, {4, 1000, 9}, {4, 1000, 5}, {4, 1000, 9}}});
    EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, records)), 0u);
    ExpectEnd(log.get(), crowd,
              "1000 4 0x00000005 -; 1000 4 0x00000005 0x00000005; 1000 4 0x00000009 0x00000005");
  }
}

TEST(Ids, StayApartHoweverManyThereAre) {
  constexpr std::uint32_t count = 700;
  Records records;
  std::string expected;
  for (std::uint32_t i = 0; i < 2 * count; ++i) {
    const std::uint32_t id = 0x00FF0000 + i % count * 16;  // at even distances, as addresses are
    char text[60];
    std::snprintf(text, sizeof text, "; %u 2 0x%08X -; %u 6 0x%08X -", 1000 + i, id, 1000 + i, id);
    records.insert(records.end(), {{2, 1000 + i, id}, {6, 1000 + i, id}});
    expected += text;
  }
  ScriptedTarget target;
  target.numbers["Watchpoint.Entity!Objects"] = 0;
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, records)), 0u);
  EXPECT_EQ("; " + DumpEntries(log.get()), expected);
  EXPECT_EQ(TLTaskLogGetCategoriesCount(log.get(), 0, nullptr), 2 * count);
}

}  // namespace
