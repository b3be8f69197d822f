// What the records of a file become: pairing, prologs and epilogs, task ids.
#include <gtest/gtest.h>

#include "support/logs.h"

namespace {

using Records = std::vector<FileRecord>;

// Reads sections of the tasks A, B, C from 1000 to 5000.
LogPtr ReadTasks(const std::vector<Records>& tasks, const Records& stamps = {},
                 std::uint16_t version = 0x0103) {
  const char* const names[] = {"A", "B", "C"};
  std::vector<FileSection> sections;
  for (const Records& records : tasks) sections.push_back({names[sections.size()], 0, 0, records});
  LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({.fileVersion = version}, sections, stamps)), 0u);
  return log;
}

void ExpectEntries(const char* name, const std::vector<Records>& tasks, const Records& stamps,
                   const std::string& expected) {
  EXPECT_EQ(DumpEntries(ReadTasks(tasks, stamps).get()), expected) << name;
}

TEST(Records, StandAloneForAnEntryOfWhichOneSideIsKnown) {
  const std::pair<FileRecord, const char*> cases[] = {
      {{0, 0, 2000}, "2000 2 A -"}, {{1, 0, 2000}, "2000 3 A -"}, {{2, 0, 2000}, "2000 4 A -"},
      {{3, 0, 2000}, "2000 1 - A"}, {{4, 0, 2000}, "2000 4 - A"}, {{5, 0, 2000}, "2000 0 - A"},
      {{6, 0, 2000}, "2000 5 - A"}, {{7, 5, 2000, "TP"}, ""},     {{8, 5, 2000, "OVRN"}, ""},
      {{9, 5, 2000}, ""},           {{255, 5, 2000}, ""},         {{0x00000100, 0, 2000}, "2000 2 A -"}};
  for (const auto& [record, expected] : cases) ExpectEntries("alone", {{record}}, {}, expected);
}

TEST(Records, PairByTimeWithTheFirstFreeSlot) {
  ExpectEntries("out, in", {{{6, 0, 2000}}, {{2, 0, 2000}}}, {}, "2000 5 B A");
  ExpectEntries("in, out", {{{1, 0, 2000}}, {{4, 0, 2000}}}, {}, "2000 3 A B");
  ExpectEntries("type of slot 1", {{{1, 0, 2000}}, {{3, 0, 2000}}}, {}, "2000 1 A B");
  ExpectEntries("type of slot 1 again", {{{3, 0, 2000}}, {{1, 0, 2000}}}, {}, "2000 1 B A");
  ExpectEntries("two switches at one time", {{{2, 0, 2000}, {2, 0, 2000}}, {{5, 0, 2000}, {3, 0, 2000}}}, {},
                "2000 0 A B; 2000 1 A B");
  ExpectEntries("a task with itself", {{{2, 0, 2000}, {4, 0, 2000}}}, {}, "2000 4 A A");
  ExpectEntries("into an event's free slot", {{{0, 0, 2000}}, {{5, 0, 2000}}, {{2, 0, 2000}}}, {},
                "2000 0 A B; 2000 4 C A");
  ExpectEntries("only at one time", {{{2, 0, 3000}, {2, 0, 2000}}, {{5, 0, 2999}, {5, 0, 2001}}}, {},
                "2000 4 A -; 2001 0 - B; 2999 0 - B; 3000 4 A -");
}

TEST(Records, AreDroppedAsPrologOrEpilog) {
  ExpectEntries("prolog of 3", {{{3, 0, 1000}, {0, 0, 2000}}}, {}, "2000 2 A -");
  ExpectEntries("of 6, alone", {{{6, 0, 1000}}}, {}, "");
  ExpectEntries("not of 0", {{{0, 0, 1000}}}, {}, "1000 2 A -");
  ExpectEntries("not of 2", {{{2, 0, 1000}}}, {}, "1000 4 A -");
  ExpectEntries("not at another time", {{{3, 0, 1001}}}, {}, "1001 1 - A");
  ExpectEntries("only the first", {{{0, 0, 1000}, {3, 0, 1000}}}, {}, "1000 1 A A");
  ExpectEntries("epilog", {{{0, 0, 2000}, {2, 0, 5000}}}, {}, "2000 2 A -");
  ExpectEntries("not a single one", {{{2, 0, 5000}}}, {}, "5000 4 A -");
  ExpectEntries("not before the stop", {{{0, 0, 2000}, {0, 0, 4999}}}, {}, "2000 2 A -; 4999 2 A -");
  ExpectEntries("not a single stamp", {}, {{7, 1, 5000, "TP"}}, "5000 6 TP -");
  ExpectEntries("other records among stamps", {}, {{2, 0, 2000}, {8, 1, 2001, "x"}, {0, 0, 3000}}, "");
}

TEST(Records, GiveTheTaskInSlot0ItsId) {
  const struct {
    const char* name;
    std::uint16_t version;
    std::vector<Records> tasks;
    const char* expected;
  } cases[] = {
      {"other section", 0x0104, {{{2, 0, 2000}}, {{5, 41, 2000}}}, "task A 0 0 id 41; task B 0 0 id 0"},
      {"slot 0 empty", 0x0104, {{{5, 41, 2000}}, {{2, 0, 2000}}}, "task A 0 0 id 0; task B 0 0 id 0"},
      {"last one", 0x0104, {{{2, 41, 2000}, {1, 43, 3000}, {0, 0, 4000}}}, "task A 0 0 id 43"},
      {"not dropped", 0x0104, {{{3, 41, 1000}, {2, 0, 2000}, {2, 42, 5000}}}, "task A 0 0 id 0"},
      {"not before 0x0104", 0x0103, {{{2, 41, 2000}}, {{0, 42, 3000}}}, "task A 0 0 id 0; task B 0 0 id 0"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(DumpCategories(ReadTasks(c.tasks, {}, c.version).get()), c.expected) << c.name;
}

}  // namespace
