// How the ids of records become categories: what is fetched, in which portions, and what is made up.
#include <gtest/gtest.h>

#include <cmath>

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
      {"one", 1, {}, all, {"+0, 8"}, 1},
      {"exactly a portion", 120, {}, all, {"+0, 484"}, 120},
      {"one more", 121, {}, all, {"+0, 488", "+484, 4"}, 121},
      {"two portions", 240, {}, all, {"+0, 964", "+484, 480"}, 240},
      {"three portions", 241, {}, all, {"+0, 968", "+484, 484", "+964, 4"}, 241},
      {"ends after one", 241, {}, 1, {"+0, 968"}, 120},
      {"ends after two", 500, {}, 2, {"+0, 2004", "+484, 1520"}, 240},
      {"odd size", 2, 15, all, {"+0, 15"}, 2},
      {"odd size below a word", 0, 3, all, {"+0, 3"}, 0},
      {"odd size at a portion's end", 120, 487, all, {"+0, 487"}, 120},
      {"odd size behind a portion", 121, 491, all, {"+0, 491", "+484, 7"}, 121},
      {"larger than what is delivered", 3, 400, all, {"+0, 400"}, 3},
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

TEST(Discovery, PresetsTheSizeQuery) {
  ScriptedTarget target;
  PutTasks(target, 3);
  target.storesSizes = false;
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 2}})), 0u);
  EXPECT_EQ(target.CallsOf("DbgTaskGet"), "");
}

TEST(Discovery, StopsAtAFailingPortion) {
  ScriptedTarget target;
  PutTasks(target, 121);
  target.failures["DbgTasksList(ctl, +484"] = 0x77;
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 1}})), 0x77u);
  EXPECT_EQ(DumpCategories(log.get()), "task 0x00000001 7 -1 id 1");
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

TEST(Discovery, SurvivesNamesWithoutEnd) {
  ScriptedTarget target;
  PutCategories(target);
  target.terminatesTexts = false;
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 1}, {6, 1010, 0x9000}})),
            noSuchVariable);  // the address is asked for under a name that no object has
  EXPECT_EQ(DumpEntries(log.get()).substr(0, 13), "1000 4 Idlexx");
}

TEST(Discovery, SharesOneTaskAmongEqualOnesAndKeepsTheLaterId) {
  ScriptedTarget target;
  target.tasks = {{1, "Twin", 10, 5u << 16}, {2, "Twin", 10, 5u << 16}, {3, "Twin", 11, 5u << 16}};
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 2}, {4, 1010, 1}})), 0u);
  EXPECT_EQ(DumpCategories(log.get()), "task Twin 5 10 id 2; task Twin 5 11 id 3; task 0x00000001 7 -1 id 1");
}

TEST(Discovery, RewritesTheIdOfATaskThatIsListedAgain) {
  ScriptedTarget target;
  target.tasks = {{1, "Idle", 10, 0}};
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 1}})), 0u);
  target.tasks[0].id = 8;
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(2000, {{4, 2000, 8}})), 0u);
  EXPECT_EQ(DumpCategories(log.get()), "task Idle 0 10 id 8");
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

TEST(Discovery, KeepsAFailureThoughALaterFetchSucceeds) {
  ScriptedTarget target;
  PutCategories(target);
  target.failures["DbgTasksList"] = 0x77;
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 1}, {4, 1010, 2}, {6, 1020, 0x9004}})),
            0x77u);
  EXPECT_EQ(target.CallsOf("DbgTasksList"), "DbgTasksList(ctl, 0)");
  EXPECT_EQ(DumpEntries(log.get()),
            "1000 4 0x00000001 -; 1010 4 0x00000002 0x00000001; 1020 6 TP2 0x00000002");
}

// Looks up an unknown testpoint on a target with these objects; `categories` are those found, apart from the
// placeholder.
void ExpectTestpoints(const char* name, const std::map<std::string, double>& numbers,
                      const std::vector<std::string>& objects, std::uint32_t status,
                      const std::string& categories) {
  SCOPED_TRACE(name);
  ScriptedTarget target;
  for (const auto& [variable, value] : numbers) target.numbers["Watchpoint.Entity" + variable] = value;
  for (std::size_t i = 0; i < objects.size(); ++i)
    target.texts["Watchpoint.Entity!Object" + std::to_string(i)] = objects[i];
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{6, 1000, 0xABCDEF}})), status);
  EXPECT_EQ(DumpCategories(log.get()), categories + "testpoint 0x00ABCDEF id 11259375");
}

TEST(Discovery, ReadsTestpointObjects) {
  const std::string longest(253, 'n');
  ExpectTestpoints("no such variables", {}, {}, noSuchVariable, "");
  ExpectTestpoints("none", {{"!Objects", 0}}, {}, 0, "");
  ExpectTestpoints("not a number", {{"!Objects", NAN}}, {}, 0, "");
  ExpectTestpoints("modulo 2^32", {{"!Objects", 0x1p32}}, {}, 0, "");
  ExpectTestpoints("truncated", {{"!Objects", 1.9}, {".A.Prop.Address", 36864.7}}, {"A"}, 0,
                   "testpoint A id 36864; ");
  ExpectTestpoints("address modulo 2^32", {{"!Objects", 1}, {".A.Prop.Address", 0x1p32 + 5}}, {"A"}, 0,
                   "testpoint A id 5; ");
  ExpectTestpoints("negative", {{"!Objects", 1}, {".A.Prop.Address", -1}}, {"A"}, 0,
                   "testpoint A id 4294967295; ");
  ExpectTestpoints("second name fails", {{"!Objects", 2}, {".A.Prop.Address", 5}}, {"A"}, noSuchVariable,
                   "testpoint A id 5; ");
  ExpectTestpoints("address fails", {{"!Objects", 2}}, {"A", "B"}, noSuchVariable, "");
  ExpectTestpoints("empty name", {{"!Objects", 1}, {"..Prop.Address", 5}}, {""}, 0, "testpoint  id 5; ");
  ExpectTestpoints("longest", {{"!Objects", 1}, {"." + longest + ".Prop.Address", 5}}, {longest}, 0,
                   "testpoint " + longest + " id 5; ");
  ExpectTestpoints("variable is cut", {{"!Objects", 1}, {"." + longest + "n.Prop.Addres", 5}},
                   {longest + "n"}, 0, "testpoint " + longest + "n id 5; ");
}

TEST(Discovery, NamesTimingIssuesAfterTheirCode) {
  const std::pair<std::uint32_t, std::string> cases[] = {
      {0x41424344, "ABCD"},       {0x20202020, "    "},       {0x7E217E21, "~!~!"},
      {0x41424300, "0x41424300"}, {0x1F424344, "0x1F424344"}, {0x417F4344, "0x417F4344"},
      {0x4142C344, "0x4142C344"}, {0x00000003, "0x00000003"}};
  for (const auto& [code, name] : cases) {
    ScriptedTarget target;
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{7, 1000, code}})), 0u);
    EXPECT_EQ(DumpEntries(log.get()), "1000 7 " + name + " -");
    EXPECT_EQ(target.calls.size(), 4u) << "nothing is fetched for a timing issue";
  }
}

}  // namespace
