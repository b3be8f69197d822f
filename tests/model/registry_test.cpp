// Categories: when one is found and when it is made, and which a query yields.
#include <gtest/gtest.h>

#include <set>

#include "model/model.h"
#include "support/allocations.h"
#include "support/dump.h"

namespace {

TEST(Registry, TellsTasksApartByNamePriorityAndTimeSlice) {
  _STLTaskLog log;
  STLTask* idle = log.FindOrCreateTask("Idle", 0, 10);
  idle->id = 77;
  EXPECT_EQ(log.FindOrCreateTask("Idle", 0, 10), idle);
  EXPECT_EQ(idle->GetId(), 77u);
  const std::set<STLTask*> distinct = {idle,
                                       log.FindOrCreateTask("Idle", 1, 10),
                                       log.FindOrCreateTask("Idle", 0, 11),
                                       log.FindOrCreateTask("idle", 0, 10),
                                       log.FindOrCreateTask("Idle ", 0, 10),
                                       log.FindOrCreateTask("", 0, 10)};
  EXPECT_EQ(distinct.size(), 6u);
  EXPECT_EQ(DumpCategories(&log, 0, "Idle"),
            "task Idle 0 10 id 77; task Idle 1 10 id 0; task Idle 0 11 id 0");
}

TEST(Registry, KeepsTheKindsApart) {
  _STLTaskLog log;
  STLTestpoint* five = log.FindOrCreateTestpoint("TP", 5);
  STLTestpoint* six = log.FindOrCreateTestpoint("TP", 6);
  STLTimingIssue* issue = log.FindOrCreateTimingIssue("TP");
  EXPECT_NE(five, six);
  EXPECT_EQ(log.FindOrCreateTestpoint("TP", 5), five);
  EXPECT_EQ(log.FindOrCreateTestpoint("TP", 6), six);
  EXPECT_EQ(log.FindOrCreateTimingIssue("TP"), issue);
  EXPECT_EQ(log.GetCategoriesCount(0, "TP"), 3u);
  EXPECT_EQ(log.GetCategoriesCount(2, "TP"), 2u);
  log.FindOrCreateTask("TP", 0, 0);
  EXPECT_EQ(DumpCategories(&log),
            "testpoint TP id 5; testpoint TP id 6; issue TP id 1414529024; task TP 0 0 id 0");
  EXPECT_EQ(issue->GetPriority(), 0u);
  EXPECT_EQ(issue->GetTimeSlice(), 0);
  EXPECT_EQ(five->GetPriority(), 0u);
  EXPECT_EQ(five->GetTimeSlice(), 0);
}

TEST(Registry, DerivesTheIdOfATimingIssueFromItsName) {
  const std::pair<std::string, u32> cases[] = {
      {"OVRN", 0x4F56524E}, {"0x8000ABCD", 0x30783830}, {"\xFF\x80\x01~", 0xFF80017E}, {"", 0},
      {"A", 0x41000000},    {"AB", 0x41420000},         {"ABC", 0x41424300},           {"ABCDE", 0x41424344},
  };
  _STLTaskLog log;
  for (const auto& [name, id] : cases) EXPECT_EQ(log.FindOrCreateTimingIssue(name)->GetId(), id) << name;
}

// A log of 40 categories, so that their array grows several times.
void FillRegistry(_STLTaskLog& log) {
  for (u32 i = 0; i < 10; ++i) {
    log.FindOrCreateTask("T" + std::to_string(9 - i), i, 0);
    log.FindOrCreateTestpoint("both", i);
    log.FindOrCreateTimingIssue("I" + std::to_string(i));
    log.FindOrCreateTask("both", i, 0);
  }
}

TEST(Registry, YieldsCategoriesInTheOrderOfTheirCreation) {
  std::string all, both;
  for (int i = 0; i < 10; ++i) {
    const std::string n = std::to_string(i);
    const std::string pair[] = {"testpoint both id " + n, "task both " + n + " 0 id 0"};
    const std::string issueId = std::to_string(0x49300000 + i * 0x10000);
    all += (i ? "; task T" : "task T") + std::to_string(9 - i) + " " + n + " 0 id 0; " + pair[0] +
           "; issue I" + n + " id " + issueId + "; " + pair[1];
    both += (i ? "; " : "") + pair[0] + "; " + pair[1];
  }
  _STLTaskLog log;
  FillRegistry(log);
  EXPECT_EQ(DumpCategories(&log), all);
  EXPECT_EQ(DumpCategories(&log, 0, "both"), both);
}

TEST(Registry, CountsWhatItYields) {
  _STLTaskLog log;
  FillRegistry(log);
  const struct {
    u64 mask;
    std::size_t all, both, unknown, oneIssue;
  } cases[] = {
      {0, 40, 20, 0, 1},     {1, 20, 10, 0, 0},  {2, 10, 10, 0, 0}, {3, 30, 20, 0, 0},
      {4, 10, 0, 0, 1},      {5, 30, 10, 0, 1},  {6, 20, 10, 0, 1}, {7, 40, 20, 0, 1},
      {8, 0, 0, 0, 0},       {15, 40, 20, 0, 1}, {9, 20, 10, 0, 0}, {UINT64_MAX, 40, 20, 0, 1},
      {~u64{7}, 0, 0, 0, 0},
  };
  for (const auto& c : cases) {
    const std::pair<const char*, std::size_t> names[] = {
        {nullptr, c.all}, {"both", c.both}, {"bot", c.unknown}, {"both ", c.unknown}, {"I3", c.oneIssue}};
    for (const auto& [name, count] : names) {
      SCOPED_TRACE(testing::Message() << std::hex << c.mask << ' ' << (name ? name : "null"));
      EXPECT_EQ(TLTaskLogGetCategoriesCount(&log, c.mask, name), count);
      EXPECT_EQ(CountIn(DumpCategories(&log, c.mask, name)), count);
    }
  }
}

TEST(Registry, StaysWholeWhenMemoryRunsOut) {
  for (std::size_t allocation = 1;; ++allocation) {
    _STLTaskLog log;
    bool failed = false;
    const std::string name(100, 'n');
    for (u32 id = 0; id < 9; ++id) {  // over the growth of the array
      const AllocationWatch watch(id == 8 ? allocation : 0);
      try {
        log.FindOrCreateTestpoint(name, id);
      } catch (const std::bad_alloc&) {
        failed = true;
      }
    }
    EXPECT_EQ(CountIn(DumpCategories(&log)), failed ? 8u : 9u);
    EXPECT_EQ(CountIn(DumpCategories(&log, 0, name.c_str())), failed ? 8u : 9u);
    if (!failed) break;
  }
}

// What a call gives when its first allocation fails.
template <class Call>
auto WithoutMemory(Call call) {
  const AllocationWatch watch(1);
  return call();
}

TEST(Registry, GivesNoLogAndNoIteratorsWithoutMemory) {
  _STLTaskLog log;
  TLTaskLog created = &log;
  EXPECT_EQ(WithoutMemory([&] { return TLTaskLogCreate(&created); }), u32{TLErrOutOfMemory});
  EXPECT_EQ(created, &log);
  EXPECT_EQ(WithoutMemory([&] { return TLTaskLogGetCategories(&log, 0, nullptr); }), nullptr);
  EXPECT_EQ(WithoutMemory([&] { return TLTaskLogGetCategories(&log, 0, "both"); }), nullptr);
  EXPECT_EQ(WithoutMemory([&] { return TLTaskLogGetEntries(&log, nullptr, 0, 0, UINT64_MAX); }), nullptr);
}

}  // namespace
