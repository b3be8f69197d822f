// How the ids of records become categories: what is fetched, in which portions, and what is made up.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/logs.h"
#include "target/access.h"

namespace {

void PutTasks(ScriptedTarget& target, std::uint32_t count) {
  for (std::uint32_t id = 1; id <= count; ++id) target.tasks.push_back({id, "T" + std::to_string(id), 0, 0});
}

TEST(Discovery, ReadsTheTaskListInPortions) {
  constexpr std::size_t all = SIZE_MAX;
  const struct {
    const char* name;
    std::uint32_t tasks;
    std::optional<std::uint32_t> reportedBytes;
    std::size_t portions;
    std::vector<std::string> fills;
    std::uint32_t registered;  // apart from the placeholder
  } cases[] = {
      {"none", 0, {}, all, {"+0, 4"}, 0},
      {"one more", 121, {}, all, {"+0, 488", "+484, 4"}, 121},
      {"two portions", 240, {}, all, {"+0, 964", "+484, 480"}, 240},
      {"ends after one", 241, {}, 1, {"+0, 968"}, 120},
      {"odd size", 2, 15, all, {"+0, 15"}, 2},
      {"odd size at a portion's end", 120, 487, all, {"+0, 487"}, 120},
      {"much larger", 3, 0x04000000, all, {"+0, 67108864"}, 3},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ScriptedTarget target;
    PutTasks(target, c.tasks);
    target.listSizeBytes = c.reportedBytes;
    target.listPortions = c.portions;
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 9999}})), 0u);
    std::string expected = "DbgTasksList(ctl, 0)";
    for (const std::string& fill : c.fills) expected += "; DbgTasksList(ctl, " + fill + ")";
    EXPECT_EQ(target.CallsOf("DbgTasksList"), expected);
    EXPECT_EQ(CountIn(target.CallsOf("DbgTaskGetName")), c.registered);
    EXPECT_EQ(TLTaskLogGetCategoriesCount(log.get(), 0, nullptr), c.registered + 1);
  }
}

// An identifier may look like the word that continues a list, or be 0, also as the last one, and however much
// a target delivers at once.
TEST(Discovery, AsksForEveryIdentifier) {
  for (const std::size_t count : {1, 119, 120, 121, 240, 241, 300})
    for (const std::size_t portionWords : {120, 1000})
      for (const std::uint32_t last : {taskListContinues, 0u}) {
        SCOPED_TRACE(testing::Message() << count << " tasks, " << portionWords << " at once, last " << last);
        ScriptedTarget target;
        PutTasks(target, static_cast<std::uint32_t>(count));
        target.tasks.back().id = last;
        target.listPortionWords = portionWords;
        const LogPtr log = NewLog();
        EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, last}})), 0u);
        EXPECT_EQ(TLTaskLogGetCategoriesCount(log.get(), 0, nullptr), count);
        EXPECT_EQ(DumpEntries(log.get()), "1000 4 T" + std::to_string(count) + " -");
      }
}

// A log whose tasks bear the names that unknown ids would be given: an id that turns up leads to the
// task of its name, and that task's former id to the next one that has it. At one time, where a record is
// known when a task of its id has an entry, and at many.
TEST(Discovery, GivesATaskTheIdThatItsNameStates) {
  constexpr std::uint32_t count = 200;
  const auto nameOf = [](std::uint32_t task) { return "0x" + std::to_string(10'000'000 + task); };
  for (const std::uint64_t step : {0, 10}) {
    std::vector<std::uint32_t> ids;
    std::vector<FileSection> sections;
    for (std::uint32_t task = 0; task < count; ++task) {
      ids.push_back(5 + task % 2);
      sections.push_back({nameOf(task), 7, -1, {{0, ids.back(), 2000}, {0, 0, 2000}}});
    }
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, sections)), 0u);
    std::vector<RingRecord> records;
    std::vector<std::uint32_t> added;  // tasks
    std::string expected;
    for (std::uint32_t i = 0; i < 3 * (count - 2); ++i) {
      const std::uint32_t id =
          i % 3 == 0 ? static_cast<std::uint32_t>(std::stoul(nameOf(i / 3), nullptr, 16)) : 4 + i % 3;
      const std::uint64_t time = 5000 + step * i;
      records.push_back({2, time, id});
      const auto has = [&](std::uint32_t task) { return ids[task] == id; };
      if (step == 0 && std::any_of(added.begin(), added.end(), has)) continue;
      std::uint32_t task = 0;
      while (task < count && !has(task)) ++task;
      if (task == count) ids[task = i / 3] = id;
      added.push_back(task);
      expected += std::to_string(time) + " 2 " + nameOf(task) + " -; ";
    }
    EXPECT_EQ(AppendRing(log.get(), RingWords(5000, records)), 0u);
    EXPECT_EQ(DumpEntries(log.get(), nullptr, 0, 5000) + "; ", expected);
  }
}

TEST(Discovery, TakesWhatTheTargetSaysOfTasks) {
  ScriptedTarget target;
  const std::string longest(254, 'n');
  target.tasks = {{1, "", INT32_MIN, 0xFF05FFFF},
                  {2, longest, INT32_MAX, 0xFFFFFFFF},
                  {3, longest + "cut", 0, 0xFF00FFFF},
                  {0xFFFFFFFF, "Last", -1, 0x00070000}};
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 0xFFFFFFFF}})), 0u);
  EXPECT_EQ(DumpCategories(log.get()), "task  5 -2147483648 id 1; task " + longest +
                                           " 255 2147483647 id 2; task " + longest +
                                           " 0 0 id 3; task Last 7 -1 id 4294967295");
  EXPECT_EQ(DumpEntries(log.get()), "1000 4 Last -");
}

TEST(Discovery, SharesOneTaskAmongEqualOnesAndKeepsTheIdListedLast) {
  ScriptedTarget target;
  target.tasks = {{1, "Twin", 10, 5u << 16}, {2, "Twin", 10, 5u << 16}, {3, "Twin", 11, 5u << 16}};
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 2}, {4, 1010, 1}})), 0u);
  EXPECT_EQ(DumpCategories(log.get()), "task Twin 5 10 id 2; task Twin 5 11 id 3; task 0x00000001 7 -1 id 1");
  target.tasks = {{8, "Twin", 10, 5u << 16}};
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(2000, {{4, 2000, 8}})), 0u);
  EXPECT_EQ(DumpCategories(log.get()), "task Twin 5 10 id 8; task Twin 5 11 id 3; task 0x00000001 7 -1 id 1");
}

TEST(Discovery, FetchesEachKindOncePerAppendAndOnlyOnAMiss) {
  ScriptedTarget target;
  PutCategories(target);
  const LogPtr log = NewLog();
  const auto append = [&](const std::vector<RingRecord>& records) {
    target.calls.clear();
    EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, records)), 0u);
    return target.CallsOf("DbgTasksList(ctl, 0)") +
           target.CallsOf("GetVariable(ctl, Watchpoint.Entity!Objects");
  };
  constexpr char both[] = "DbgTasksList(ctl, 0)GetVariable(ctl, Watchpoint.Entity!Objects, 0)";
  EXPECT_EQ(append({{4, 1000, 70}, {2, 1010, 71}, {6, 1020, 72}, {6, 1030, 73}}), both);
  EXPECT_EQ(append({{4, 2000, 70}, {2, 2010, 1}, {6, 2020, 0x9004}, {7, 2030, 70}}), "");
  // The id of a task is none of a testpoint.
  EXPECT_EQ(append({{4, 3000, 72}, {6, 3010, 70}}), both);
  EXPECT_EQ(DumpCategories(log.get(), 0, "0x00000046"),
            "task 0x00000046 7 -1 id 70; issue 0x00000046 id 813183024; testpoint 0x00000046 id 70");
}

// Up to one that has no name. The variable of the longest name's address is as long as the target takes; of a
// longer one it is cut.
TEST(Discovery, ReadsTestpointObjects) {
  const std::string longest(253, 'n');
  ScriptedTarget target;
  const std::pair<std::string, std::string> objects[] = {{"A", ".A.Prop.Address"},
                                                         {"", "..Prop.Address"},
                                                         {longest, "." + longest + ".Prop.Address"},
                                                         {longest + "m", "." + longest + "m.Prop.Addres"}};
  for (const auto& [name, variable] : objects) {
    target.texts["Watchpoint.Entity!Object" + std::to_string(target.texts.size())] = name;
    target.numbers["Watchpoint.Entity" + variable] = 0x1p32 + 5.7 + static_cast<double>(target.texts.size());
  }
  target.numbers["Watchpoint.Entity!Objects"] = 5.9;
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{6, 1000, 0xABCDEF}})), noSuchVariable);
  EXPECT_EQ(DumpCategories(log.get()), "testpoint A id 6; testpoint  id 7; testpoint " + longest +
                                           " id 8; testpoint " + longest +
                                           "m id 9; testpoint 0x00ABCDEF id 11259375");
}

TEST(Discovery, NamesTimingIssuesAfterTheirCodeAndFetchesNothing) {
  ScriptedTarget target;
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target,
                       RingWords(1000, {{7, 1000, 0x41424344},
                                        {7, 1001, 0x207E2021},
                                        {7, 1002, 0x41424300},
                                        {7, 1003, 0x1F424344},
                                        {7, 1004, 0x417F4344},
                                        {7, 1005, 0x4142C344}})),
            0u);
  EXPECT_EQ(DumpEntries(log.get()),
            "1000 7 ABCD -; 1001 7  ~ ! -; 1002 7 0x41424300 -; 1003 7 0x1F424344 -; 1004 7 0x417F4344 -; "
            "1005 7 0x4142C344 -");
  EXPECT_EQ(target.calls.size(), 4u);
}

}  // namespace
