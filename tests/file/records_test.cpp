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

TEST(Records, PairWithThoseOfTheOtherTaskInEitherOrder) {
  const struct {
    std::uint32_t out, in;  // Ko types in the sections of the tasks in slot 1 and slot 0
    const char* type;
  } cases[] = {{5, 2, "0"}, {3, 2, "1"}, {4, 1, "3"}, {4, 2, "4"},
               {6, 2, "5"}, {5, 1, "0"}, {3, 1, "1"}, {6, 1, "5"}};
  for (const auto& c : cases) {
    const std::string start = std::string("2000 ") + c.type;
    ExpectEntries("out, in", {{{c.out, 0, 2000}}, {{c.in, 0, 2000}}}, {}, start + " B A");
    ExpectEntries("in, out", {{{c.in, 0, 2000}}, {{c.out, 0, 2000}}}, {}, start + " A B");
  }
}

TEST(Records, PairByTimeWithTheFirstFreeSlot) {
  ExpectEntries("two switches at one time", {{{2, 0, 2000}, {2, 0, 2000}}, {{5, 0, 2000}, {3, 0, 2000}}}, {},
                "2000 0 A B; 2000 1 A B");
  ExpectEntries("a task with itself", {{{2, 0, 2000}, {4, 0, 2000}}}, {}, "2000 4 A A");
  ExpectEntries("into an event's free slot", {{{0, 0, 2000}}, {{5, 0, 2000}}, {{2, 0, 2000}}}, {},
                "2000 0 A B; 2000 4 C A");
  ExpectEntries("never an event into one", {{{5, 0, 2000}}, {{0, 0, 2000}}, {{2, 0, 2000}}}, {},
                "2000 0 C A; 2000 2 B C");
  ExpectEntries("only at one time", {{{2, 0, 3000}, {2, 0, 2000}}, {{5, 0, 2999}, {5, 0, 2001}}}, {},
                "2000 4 A -; 2001 0 - B; 2999 0 - B; 3000 4 A -");
  ExpectEntries("not with a testpoint", {{{5, 0, 2500}}}, {{7, 1, 2500, "TP"}}, "2500 0 - A; 2500 6 TP -");
}

TEST(Records, AreDroppedAsPrologOrEpilog) {
  ExpectEntries("prolog of 3", {{{3, 0, 1000}, {0, 0, 2000}}}, {}, "2000 2 A -");
  ExpectEntries("of 4", {{{4, 0, 1000}, {0, 0, 2000}}}, {}, "2000 2 A -");
  ExpectEntries("of 5", {{{5, 0, 1000}, {0, 0, 2000}}}, {}, "2000 2 A -");
  ExpectEntries("of 6, alone", {{{6, 0, 1000}}}, {}, "");
  ExpectEntries("not of 0", {{{0, 0, 1000}}}, {}, "1000 2 A -");
  ExpectEntries("not of 1", {{{1, 0, 1000}}}, {}, "1000 3 A -");
  ExpectEntries("not of 2", {{{2, 0, 1000}}}, {}, "1000 4 A -");
  ExpectEntries("not at another time", {{{3, 0, 1001}}}, {}, "1001 1 - A");
  ExpectEntries("only the first", {{{0, 0, 1000}, {3, 0, 1000}}}, {}, "1000 1 A A");
  ExpectEntries("epilog", {{{0, 0, 2000}, {2, 0, 5000}}}, {}, "2000 2 A -");
  ExpectEntries("only the last", {{{0, 0, 5000}, {0, 0, 5000}, {0, 0, 5000}}}, {}, "5000 2 A -; 5000 2 A -");
  ExpectEntries("not a single one", {{{2, 0, 5000}}}, {}, "5000 4 A -");
  ExpectEntries("not before the stop", {{{0, 0, 2000}, {0, 0, 4999}}}, {}, "2000 2 A -; 4999 2 A -");
  ExpectEntries("last stamp", {}, {{7, 1, 1000, "TP"}, {7, 1, 5000, "TP"}}, "1000 6 TP -");
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
      {"own section", 0x0104, {{{2, 41, 2000}}, {{0, 42, 3000}}}, "task A 0 0 id 41; task B 0 0 id 42"},
      {"other section", 0x0104, {{{2, 0, 2000}}, {{5, 41, 2000}}}, "task A 0 0 id 41; task B 0 0 id 0"},
      {"slot 0 empty", 0x0104, {{{5, 41, 2000}}, {{2, 0, 2000}}}, "task A 0 0 id 0; task B 0 0 id 0"},
      {"last one", 0x0104, {{{2, 41, 2000}, {1, 43, 3000}, {0, 0, 4000}}}, "task A 0 0 id 43"},
      {"not dropped", 0x0104, {{{3, 41, 1000}, {2, 0, 2000}, {2, 42, 5000}}}, "task A 0 0 id 0"},
      {"not ignored", 0x0104, {{{2, 0, 2000}, {7, 41, 2000, "TP"}, {9, 42, 2000}}}, "task A 0 0 id 0"},
      {"not before 0x0104", 0x0103, {{{2, 41, 2000}}, {{0, 42, 3000}}}, "task A 0 0 id 0; task B 0 0 id 0"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(DumpCategories(ReadTasks(c.tasks, {}, c.version).get()), c.expected) << c.name;
}

}  // namespace
