#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/program.h"

namespace {

TEST(Info, ShowsALogAtAGlance) {
  const TempFolder folder;
  folder.Write("a.tasklog", ExampleFile());
  const Result result = RunTasklog(folder, {"info", "a.tasklog"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out,
            "a.tasklog\n"
            "  period        1000 to 5000 ticks, 0.001000 to 0.005000 s\n"
            "  duration      0.004000 s\n"
            "  tick rate     1000000 ticks/s\n"
            "  entries       5\n"
            "    switches    3 (type 0: 2, type 4: 1)\n"
            "    events      0\n"
            "    testpoints  1\n"
            "    issues      1\n"
            "  categories    4\n"
            "    tasks       2\n"
            "    testpoints  1\n"
            "    issues      1\n"
            "\n"
            "  task       priority  time slice          id     entries\n"
            "  Idle              0          10  0x00000001           2\n"
            "  Ctrl              5          -1  0x00000002           1\n"
            "\n"
            "  testpoint                                id     entries\n"
            "  TP1                              0x00000009           1\n"
            "\n"
            "  issue                                    id     entries\n"
            "  OVRN                             0x4F56524E           1\n");
}

TEST(Info, PrintsStableJson) {
  const TempFolder folder;
  folder.Write("a.tasklog", ExampleFile());
  const Result result = RunTasklog(folder, {"info", "--json", "a.tasklog"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(
      result.out,
      "[\n"
      R"({"file":"a.tasklog","startTicks":"1000","stopTicks":"5000","durationTicks":"4000",)"
      R"("ticksPerSecond":1000000,"startSeconds":0.001000,"stopSeconds":0.005000,"durationSeconds":0.004000,)"
      R"("entries":5,"entriesByType":{"switch0":2,"switch1":0,"event":0,"switch3":0,"switch4":1,"switch5":0,)"
      R"("testpoint":1,"issue":1},"categoriesByKind":{"task":2,"testpoint":1,"issue":1},"categories":[)"
      R"({"kind":"task","name":"Idle","id":1,"priority":0,"timeSlice":10,"entries":2},)"
      R"({"kind":"task","name":"Ctrl","id":2,"priority":5,"timeSlice":-1,"entries":1},)"
      R"({"kind":"testpoint","name":"TP1","id":9,"entries":1},)"
      R"({"kind":"issue","name":"OVRN","id":1331057230,"entries":1}]})"
      "\n]\n");
}

TEST(Info, GoesOnBehindAFileThatCannotBeRead) {
  const TempFolder folder;
  folder.Write("a.tasklog", ExampleFile());
  folder.Write("text", std::string("hello"));
  Bytes newer = ExampleFile();
  newer[10] = 0x04;
  folder.Write("newer.tasklog", newer);
  const Result result = RunTasklog(
      folder, {"info", "--json", "missing", "a.tasklog", ".", "text", "newer.tasklog", "a.tasklog"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(
      result.err,
      "tasklog: reading 'missing': Error opening TaskLog file (No such file or directory)\n"
      "tasklog: reading '.': Error reading TaskLog file (it is a folder; name the files in it)\n"
      "tasklog: reading 'text': Not a valid TaskLog file (it is damaged, cut short or something else)\n"
      "tasklog: reading 'newer.tasklog': TaskLog file has newer version than supported (a newer version "
      "of this program reads it)\n");
  const auto json = nlohmann::json::parse(result.out);
  ASSERT_EQ(json.size(), 2u);
  EXPECT_EQ(json[1]["file"], "a.tasklog");
  EXPECT_EQ(RunTasklog(folder, {"info", "--json", "missing"}).out, "[]\n");
}

TEST(Info, TakesAnyFileName) {
  const TempFolder folder;
  const std::pair<const char*, const char*> names[] = {
      {"-x.tasklog", "-x.tasklog"}, {"two words", "two words"}, {"line\nbreak", "line\\x0Abreak"},
      {"\x1b[2J", "\\x1B[2J"},      {"[a,b]", "./[a,b]"},       {"list", "list"},
      {"--json", "--json"},         {"\xff\xfe", "\\xFF\\xFE"},
  };
  for (const auto& [name, shown] : names) {
    SCOPED_TRACE(shown);
    folder.Write(name, ExampleFile());
    const Result result = RunTasklog(folder, {"info", "--", name});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out.substr(0, result.out.find('\n')), shown);
    EXPECT_TRUE(nlohmann::json::accept(RunTasklog(folder, {"info", "--json", "--", name}).out));
  }
}

TEST(Info, KnowsNoSecondsWithoutATickRate) {
  const TempFolder folder;
  // A period that ends before it begins is what some file may say.
  folder.Write("a", TaskFile({.startTime = 9000, .stopTime = 2000, .tickRate = 0}, {}));
  EXPECT_EQ(RunTasklog(folder, {"info", "a"}).out,
            "a\n"
            "  period        9000 to 2000 ticks\n"
            "  duration      -7000 ticks\n"
            "  tick rate     unknown\n"
            "  entries       0\n"
            "    switches    0\n"
            "    events      0\n"
            "    testpoints  0\n"
            "    issues      0\n"
            "  categories    0\n"
            "    tasks       0\n"
            "    testpoints  0\n"
            "    issues      0\n");
  const auto json = nlohmann::json::parse(RunTasklog(folder, {"info", "--json", "a"}).out)[0];
  EXPECT_EQ(json["durationTicks"], "-7000");
  EXPECT_TRUE(json["ticksPerSecond"].is_null() && json["startSeconds"].is_null() &&
              json["stopSeconds"].is_null() && json["durationSeconds"].is_null());
}

}  // namespace
