// Categories: when one is found and when it is made, and which a query yields.
#include <gtest/gtest.h>

#include <set>

#include "model/model.h"
#include "support/dump.h"

namespace {

TEST(Registry, TellsCategoriesApartByWhatTheirKindIsKnownBy) {
  _STLTaskLog log;
  STLTask* idle = log.FindOrCreateTask("Idle", 0, 10);
  idle->id = 77;
  const std::set<_STLCategory*> distinct = {idle,
                                            log.FindOrCreateTask("Idle", 1, 10),
                                            log.FindOrCreateTask("Idle", 0, 11),
                                            log.FindOrCreateTask("idle", 0, 10),
                                            log.FindOrCreateTask("", 0, 10),
                                            log.FindOrCreateTestpoint("Idle", 5),
                                            log.FindOrCreateTestpoint("Idle", 6),
                                            log.FindOrCreateTimingIssue("Idle")};
  EXPECT_EQ(distinct.size(), 8u);
  EXPECT_EQ(log.FindOrCreateTask("Idle", 0, 10), idle);
  EXPECT_TRUE(distinct.contains(log.FindOrCreateTestpoint("Idle", 6)));
  EXPECT_TRUE(distinct.contains(log.FindOrCreateTimingIssue("Idle")));
  EXPECT_EQ(DumpCategories(&log, 0, "Idle"),
            "task Idle 0 10 id 77; task Idle 1 10 id 0; task Idle 0 11 id 0; testpoint Idle id 5; "
            "testpoint Idle id 6; issue Idle id 1231318117");
}

TEST(Registry, DerivesTheIdOfATimingIssueFromItsName) {
  const std::pair<std::string, u32> cases[] = {{"OVRN", 0x4F56524E},
                                               {"0x8000ABCD", 0x30783830},
                                               {"\xFF\x80\x01~", 0xFF80017E},
                                               {"", 0},
                                               {"AB", 0x41420000}};
  _STLTaskLog log;
  for (const auto& [name, id] : cases) EXPECT_EQ(log.FindOrCreateTimingIssue(name)->GetId(), id) << name;
}

TEST(Registry, YieldsAndCountsInTheOrderOfCreation) {
  _STLTaskLog log;
  for (u32 i = 0; i < 10; ++i) {  // so many that their array grows several times
    log.FindOrCreateTask("T" + std::to_string(9 - i), i, 0);
    log.FindOrCreateTestpoint("both", i);
    log.FindOrCreateTimingIssue("I" + std::to_string(i));
    log.FindOrCreateTask("both", i, 0);
  }
  EXPECT_TRUE(
      DumpCategories(&log).starts_with("task T9 0 0 id 0; testpoint both id 0; issue I0 id 1227882496; task "
                                       "both 0 0 id 0; task T8 1 0 id 0; "));
  EXPECT_TRUE(DumpCategories(&log, 0, "both").ends_with("; testpoint both id 9; task both 9 0 id 0"));
  const struct {
    u64 mask;
    std::size_t all, both, oneIssue;
  } cases[] = {
      {0, 40, 20, 1}, {1, 20, 10, 0}, {2, 10, 10, 0},  {4, 10, 0, 1},           {5, 30, 10, 1},
      {7, 40, 20, 1}, {8, 0, 0, 0},   {15, 40, 20, 1}, {UINT64_MAX, 40, 20, 1},
  };
  for (const auto& c : cases) {
    const std::pair<const char*, std::size_t> names[] = {
        {nullptr, c.all}, {"both", c.both}, {"bot", 0}, {"I3", c.oneIssue}};
    for (const auto& [name, count] : names) {
      SCOPED_TRACE(testing::Message() << std::hex << c.mask << ' ' << (name ? name : "null"));
      EXPECT_EQ(TLTaskLogGetCategoriesCount(&log, c.mask, name), count);
      EXPECT_EQ(CountIn(DumpCategories(&log, c.mask, name)), count);
    }
  }
}

}  // namespace
