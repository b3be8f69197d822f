// Which entries a query yields, and the task that was running.
#include <gtest/gtest.h>

#include "support/logs.h"

namespace {

// Entries at 100, 200, 200 and 300, with the period as given.
LogPtr FourEntries(std::uint64_t start, std::uint64_t stop) {
  LogPtr log = NewLog();
  const FileSection task{"A", 0, 0, {{0, 0, 100}, {2, 0, 200}, {0, 0, 200}, {2, 0, 300}, {0, 0, stop}}};
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({.startTime = start, .stopTime = stop}, {task})), 0u);
  return log;
}

TEST(Queries, SelectATimeRangeWithBothBounds) {
  const struct {
    std::uint64_t from, to;
    const char* expected;
  } cases[] = {
      {0, UINT64_MAX, "100 2 A -; 200 4 A -; 200 2 A A; 300 4 A A"},
      {100, 300, "100 2 A -; 200 4 A -; 200 2 A A; 300 4 A A"},
      {200, 200, "200 4 A -; 200 2 A A"},
      {150, 250, "200 4 A -; 200 2 A A"},
      {100, 100, "100 2 A -"},
      {201, UINT64_MAX, "300 4 A A"},
      {301, 400, ""},
      {300, 100, ""},
      {0, 99, ""},
      {101, 199, ""},
      {UINT64_MAX, 0, ""},
  };
  const LogPtr log = FourEntries(100, 300);
  for (const auto& c : cases) {
    EXPECT_EQ(DumpEntries(log.get(), nullptr, 0, c.from, c.to), c.expected) << c.from << ' ' << c.to;
    EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), nullptr, 0, c.from, c.to), CountIn(c.expected));
  }
}

TEST(Queries, ApplyOnlyBoundsThatCutIntoThePeriod) {
  const struct {
    const char* name;
    std::uint64_t start, stop, from, to;
    std::size_t count;
  } cases[] = {
      {"from at the start: all before it too", 250, 300, 250, 300, 4},
      {"from behind the start", 250, 300, 251, 300, 1},
      {"from before the start", 250, 300, 220, 300, 4},
      {"to at the stop: all behind it too", 100, 150, 100, 150, 4},
      {"to before the stop", 100, 150, 100, 149, 1},
      {"to behind the stop", 100, 150, 100, 250, 4},
      {"no period", 0, 0, 0, 0, 4},
      {"only from applies", 0, 0, 200, 0, 3},
      {"nothing between", 0, 1000, 301, 999, 0},
  };
  for (const auto& c : cases) {
    const LogPtr log = FourEntries(c.start, c.stop);
    EXPECT_EQ(CountIn(DumpEntries(log.get(), nullptr, 0, c.from, c.to)), c.count) << c.name;
    EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), nullptr, 0, c.from, c.to), c.count) << c.name;
  }
}

// Entries of all types, 5 rounds of them, in a period that covers them exactly.
LogPtr ManyEntries() {
  std::vector<RingRecord> records;
  for (std::uint64_t i = 0; i < 75; ++i) {
    const auto type = static_cast<std::uint32_t>(i % 15);
    const std::uint32_t id = type == 6   ? 0x9000
                             : type == 7 ? 0x53544B4F
                                         : static_cast<std::uint32_t>(1 + i % 3);
    records.push_back({type, 1000 + i / 2 * 10, id});  // two at a time
  }
  LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, records)), 0u);
  return log;
}

struct Query {
  TLCategory category;
  std::uint64_t types, from, to;

  bool Matches(TLEntry entry) const {
    const std::uint64_t time = TLEntryGetTimestamp(entry);
    const bool involved =
        TLEntryGetCategory(entry, 0) == category || TLEntryGetCategory(entry, 1) == category;
    return time >= from && time <= to && (!category || involved) &&
           ((types ? types : 0xFF) >> TLEntryGetType(entry) & 1);
  }
};

std::vector<Query> ManyQueries(TLTaskLog log) {
  std::vector<Query> queries;
  for (const char* name : {"none", "Idle", "Comm", "TP1", "TP2", "STKO"})  // none: any
    for (const std::uint64_t types :
         {0x00ull, 0xFFull, 0x40ull, 0x3Full, 0x80ull, 0x7F00ull, 0x7FFEull, 1ull << 40})
      for (const std::uint64_t from : {0ull, 1000ull, 1001ull, 1180ull, 1370ull, 1371ull, ~0ull})
        for (const std::uint64_t to : {0ull, 999ull, 1000ull, 1185ull, 1369ull, 1370ull, ~0ull})
          queries.push_back({CategoryNamed(log, name), types, from, to});
  return queries;
}

TEST(Queries, YieldAndCountExactlyWhatMatches) {
  const LogPtr log = ManyEntries();
  std::vector<TLEntry> all;
  const TLEntryIterator iterator = TLTaskLogGetEntries(log.get(), nullptr, anyType, 0, UINT64_MAX);
  while (const TLEntry entry = TLEntryIteratorNext(iterator)) all.push_back(entry);
  TLEntryIteratorDestroy(iterator);
  ASSERT_EQ(all.size(), 75u);
  for (const Query& query : ManyQueries(log.get())) {
    std::string expected;
    for (const TLEntry entry : all)
      if (query.Matches(entry)) expected += (expected.empty() ? "" : "; ") + EntryText(entry);
    ASSERT_EQ(DumpEntries(log.get(), query.category, query.types, query.from, query.to), expected)
        << query.types << ' ' << query.from << ' ' << query.to;
    // Without any filter types from 8 count too: see below.
    if (!query.category && (query.types == 0 || query.types == 0xFF)) continue;
    ASSERT_EQ(TLTaskLogGetEntriesCount(log.get(), query.category, query.types, query.from, query.to),
              CountIn(expected));
  }
}

TEST(Queries, CountTypesFrom8WhereNoFilterApplies) {
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, {{4, 1000, 1}, {9, 1010, 1}, {14, 1020, 2}})), 0u);
  const TLCategory idle = CategoryNamed(log.get(), "Idle");
  const struct {
    TLCategory category;
    std::uint64_t mask;
    std::uint64_t count, yielded;
  } cases[] = {
      {nullptr, 0, 3, 1},     {nullptr, 0xFF, 3, 1}, {nullptr, 0x2FF, 3, 2}, {nullptr, 0x7F, 1, 1},
      {nullptr, 0x200, 1, 1}, {idle, 0, 1, 1},       {idle, 0x2FF, 2, 2},    {idle, anyType, 3, 3},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), c.category, c.mask, 0, UINT64_MAX), c.count) << c.mask;
    EXPECT_EQ(CountIn(DumpEntries(log.get(), c.category, c.mask)), c.yielded) << c.mask;
  }
}

TEST(RunningTask, IsThatOfTheSwitchBefore) {
  const std::vector<RingRecord> events = {{6, 1000, 0x9000}, {4, 1010, 1},          {6, 1020, 0x9000},
                                          {0, 1030, 2},      {7, 1040, 0x53544B4F}, {2, 1050, 3},
                                          {11, 1060, 3}};
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, events)), 0u);
  EXPECT_EQ(DumpEntries(log.get()),
            "1000 6 TP1 -; 1010 4 Idle -; 1020 6 TP1 Idle; 1030 0 Ctrl Idle; 1040 7 STKO Ctrl; "
            "1050 2 Comm Ctrl; 1060 11 Comm Ctrl");
  const LogPtr other = NewLog();
  const std::vector<RingRecord> switches = {{1, 1000, 3}, {3, 1010, 1}, {5, 1020, 2}, {2, 1030, 2}};
  EXPECT_EQ(AppendRing(other.get(), RingWords(1000, switches)), 0u);
  EXPECT_EQ(DumpEntries(other.get()), "1000 1 Comm -; 1010 3 Idle Comm; 1020 5 Ctrl Idle; 1030 2 Ctrl Ctrl");
}

TEST(RunningTask, OfASwitchStaysAsTheFileSaysAndOfAnEventFollows) {
  const LogPtr log = NewLog();
  const std::vector<FileSection> tasks = {{"A", 0, 0, {{2, 0, 2000}, {0, 0, 4000}}},
                                          {"B", 0, 0, {{2, 0, 3000}, {0, 0, 4100}}},
                                          {"C", 0, 0, {{5, 0, 3000}, {0, 0, 4200}}}};
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, tasks)), 0u);
  EXPECT_EQ(DumpEntries(log.get()), "2000 4 A -; 3000 0 B C; 4000 2 A B; 4100 2 B B; 4200 2 C B");
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, {{"D", 0, 0, {{2, 0, 4050}, {5, 0, 4150}}}})), 0u);
  // At 4150 a task that is not known was switched in.
  EXPECT_EQ(DumpEntries(log.get()),
            "2000 4 A -; 3000 0 B C; 4000 2 A B; 4050 4 D B; 4100 2 B D; 4150 0 - D; 4200 2 C -");
}

}  // namespace
