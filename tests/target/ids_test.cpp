// Which category an id stands for, among many.
#include <gtest/gtest.h>

#include <cstdio>

#include "support/logs.h"

namespace {

TEST(Ids, StayApartHoweverManyThereAre) {
  constexpr std::uint32_t count = 700;
  std::vector<RingRecord> records;
  std::string expected;
  for (std::uint32_t i = 0; i < 2 * count; ++i) {
    // Ids as addresses are: at even distances.
    const std::uint32_t id = 0x00FF0000 + i % count * 16;
    const std::uint64_t time = 1000 + i;
    char name[12];
    std::snprintf(name, sizeof name, "0x%08X", id);
    records.push_back({2, time, id});
    records.push_back({6, time, id});
    const std::string at = std::to_string(time);
    expected += (i == 0 ? "" : "; ") + at + " 2 " + name + " -; " + at + " 6 " + name + " -";
  }
  ScriptedTarget target;
  target.numbers["Watchpoint.Entity!Objects"] = 0;
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, records)), 0u);
  EXPECT_EQ(DumpEntries(log.get()), expected);
  EXPECT_EQ(TLTaskLogGetCategoriesCount(log.get(), TL_CATS_TASKS, nullptr), count);
  EXPECT_EQ(TLTaskLogGetCategoriesCount(log.get(), TL_CATS_TESTPOINTS, nullptr), count);
}

TEST(Ids, OfSeveralCategoriesStandForTheFirst) {
  const LogPtr log = NewLog();
  const Bytes file =
      TaskFile({}, {{"A", 1, 2, {{2, 5, 2000}}}, {"B", 1, 2, {{2, 5, 3000}}}, {"C", 1, 2, {{2, 6, 3500}}}},
               {{{7, 9, 4000, "X"}, {7, 9, 4100, "Y"}}});
  EXPECT_EQ(AppendBytes(log.get(), file), 0u);
  ScriptedTarget target;
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(6000, {{4, 6000, 5}, {6, 6001, 9}, {4, 6002, 6}})), 0u);
  EXPECT_EQ(DumpEntries(log.get(), nullptr, 0, 6000), "6000 4 A C; 6001 6 X A; 6002 4 C A");
}

}  // namespace
