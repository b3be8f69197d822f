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
      {200, 200, "200 4 A -; 200 2 A A"},
      {201, UINT64_MAX, "300 4 A A"},
      {301, 400, ""},
      {300, 100, ""},
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
      {"to at the stop: all behind it too", 100, 150, 100, 150, 4},
      {"to before the stop", 100, 150, 100, 149, 1},
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
