#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "cli/program.h"

namespace {

TEST(List, PrintsColumns) {
  const TempFolder folder;
  folder.Write("a", ExampleFile());
  EXPECT_EQ(RunTasklog(folder, {"list", "a"}).out,
            "time [s]  type       subject  running\n"
            "0.000000  switch     Idle     -\n"
            "0.001000  switch 0   Ctrl     Idle\n"
            "0.002000  testpoint  TP1      Ctrl\n"
            "0.003000  switch 0   Idle     Ctrl\n"
            "0.003500  issue      OVRN     Idle\n");
  EXPECT_EQ(RunTasklog(folder, {"list", "a", "--ticks", "--limit", "2"}).out,
            "ticks  type       subject  running\n"
            " 1000  switch     Idle     -\n"
            " 2000  switch 0   Ctrl     Idle\n");
}

TEST(List, PrintsCsv) {
  const TempFolder folder;
  folder.Write("a", ExampleFile());
  EXPECT_EQ(RunTasklog(folder, {"list", "a", "--format", "csv"}).out,
            "ticks,seconds,type,code,subject,subject_id,running,running_id\r\n"
            "1000,0.000000,switch,4,Idle,1,,\r\n"
            "2000,0.001000,switch,0,Ctrl,2,Idle,1\r\n"
            "3000,0.002000,testpoint,6,TP1,9,Ctrl,2\r\n"
            "4000,0.003000,switch,0,Idle,1,Ctrl,2\r\n"
            "4500,0.003500,issue,7,OVRN,1331057230,Idle,1\r\n");
  EXPECT_EQ(RunTasklog(folder, {"list", "a", "--format", "csv", "--ticks", "--type", "testpoint"}).out,
            "ticks,type,code,subject,subject_id,running,running_id\r\n"
            "3000,testpoint,6,TP1,9,Ctrl,2\r\n");
}

TEST(List, PrintsJson) {
  const TempFolder folder;
  folder.Write("a", ExampleFile());
  EXPECT_EQ(
      RunTasklog(folder, {"list", "a", "--format=json", "--limit=2"}).out,
      "[\n"
      R"({"ticks":"1000","seconds":0.000000,"type":"switch","code":4,"subject":"Idle","subjectId":1,"running":null,"runningId":null},)"
      "\n"
      R"({"ticks":"2000","seconds":0.001000,"type":"switch","code":0,"subject":"Ctrl","subjectId":2,"running":"Idle","runningId":1})"
      "\n]\n");
  EXPECT_EQ(RunTasklog(folder, {"list", "a", "--format", "json", "--ticks", "--type", "issue"}).out,
            "[\n"
            R"({"ticks":"4500","type":"issue","code":7,"subject":"OVRN","subjectId":1331057230,)"
            R"("running":"Idle","runningId":1})"
            "\n]\n");
  EXPECT_EQ(RunTasklog(folder, {"list", "a", "--format", "json", "--limit", "0"}).out, "[]\n");
}

// The ticks of the entries that a list with these arguments holds.
std::vector<std::string> Listed(const TempFolder& folder, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "list");
  arguments.insert(arguments.end(), {"--format", "json"});
  const Result result = RunTasklog(folder, arguments);
  EXPECT_EQ(result.exitCode, 0) << result.err;
  std::vector<std::string> ticks;
  for (const auto& entry : nlohmann::json::parse(result.out)) ticks.push_back(entry["ticks"]);
  return ticks;
}

TEST(List, SelectsByTypeTaskAndTime) {
  struct Case {
    std::vector<std::string> options;
    std::vector<std::string> ticks;
  };
  const Case cases[] = {
      {{}, {"1000", "2000", "3000", "4000", "4500"}},
      {{"--type", "switch"}, {"1000", "2000", "4000"}},
      {{"--type", "issue", "--type", "testpoint"}, {"3000", "4500"}},
      {{"--type", "event"}, {}},
      {{"--task", "Ctrl"}, {"2000", "3000", "4000"}},
      {{"--task", "Idle", "--type", "issue"}, {"4500"}},
      {{"--from", "1ms"}, {"2000", "3000", "4000", "4500"}},
      {{"--from", "2000", "--to", "2ms"}, {"2000", "3000"}},
      {{"--to", "999us"}, {"1000"}},
      {{"--to", "0.003s", "--from", "2001000ns"}, {"4000"}},
      {{"--from", "4501"}, {}},
      {{"--from", "0s", "--to", "1000h"}, {"1000", "2000", "3000", "4000", "4500"}},
      {{"--from", "18446744073709551615"}, {}},
      {{"--from", "4611686018427387904s"}, {}},
      {{"--limit", "3"}, {"1000", "2000", "3000"}},
      {{"--task", "Ctrl", "--from", "2001", "--limit", "1"}, {"3000"}},
  };
  const TempFolder folder;
  folder.Write("a", ExampleFile());
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.options));
    std::vector<std::string> arguments = c.options;
    arguments.insert(arguments.begin(), "a");
    EXPECT_EQ(Listed(folder, arguments), c.ticks);
  }
}

TEST(List, TakesAllTasksOfAName) {
  const TempFolder folder;
  folder.Write("a", TaskFile({.startTime = 1, .stopTime = 9}, {{"Twin", 1, 0, {{2, 5, 2}}},
                                                               {"Other", 1, 0, {{2, 6, 3}}},
                                                               {"Twin", 2, 0, {{2, 7, 4}}}}));
  EXPECT_EQ(Listed(folder, {"a", "--task", "Twin"}), (std::vector<std::string>{"2", "3", "4"}));
  const Result unknown = RunTasklog(folder, {"list", "a", "--task", "Twni"});
  EXPECT_EQ(unknown.exitCode, 1);
  EXPECT_EQ(unknown.err, "tasklog: listing 'a': it has no task 'Twni'; did you mean 'Twin'?\n");
  EXPECT_EQ(unknown.out, "");
}

TEST(List, HoldsTimesOutsideThePeriodToTheBoundsToo) {
  const TempFolder folder;
  folder.Write("a", TaskFile({.startTime = 1000, .stopTime = 2000},
                             {{"T", 1, 0, {{2, 1, 500}, {2, 1, 1500}, {2, 1, 2500}}}}));
  EXPECT_EQ(Listed(folder, {"a", "--from", "1000", "--to", "2000"}), std::vector<std::string>{"1500"});
  EXPECT_EQ(RunTasklog(folder, {"list", "a", "--limit", "1"}).out,
            "time [s]  type       subject  running\n"
            "-0.000500  switch     T        -\n");
}

TEST(List, KeepsHostileNamesHarmless) {
  const std::string name = "\x1b]0;x\x07,\"\n\xff";
  const TempFolder folder;
  folder.Write("a", TaskFile({.startTime = 1, .stopTime = 9}, {{name, 1, 0, {{2, 5, 2}}}}));
  EXPECT_EQ(RunTasklog(folder, {"list", "a", "--ticks"}).out,
            "ticks  type       subject                 running\n"
            "    2  switch     \\x1B]0;x\\x07,\"\\x0A\\xFF  -\n");
  EXPECT_EQ(RunTasklog(folder, {"list", "a", "--format", "csv", "--ticks"}).out,
            "ticks,type,code,subject,subject_id,running,running_id\r\n"
            "2,switch,4,\"\\x1B]0;x\\x07,\"\"\\x0A\\xFF\",5,,\r\n");
  const auto json = nlohmann::json::parse(RunTasklog(folder, {"list", "a", "--format", "json"}).out);
  EXPECT_EQ(json[0]["subject"], "\x1b]0;x\x07,\"\n\xc3\xbf");
}

TEST(List, NeedsTicksWhenTheRateIsUnknown) {
  const TempFolder folder;
  folder.Write("a", TaskFile({.startTime = 1, .stopTime = 9, .tickRate = 0}, {{"T", 1, 0, {{2, 5, 2}}}}));
  EXPECT_EQ(RunTasklog(folder, {"list", "a"}).out,
            "ticks  type       subject  running\n    2  switch     T        -\n");
  EXPECT_EQ(RunTasklog(folder, {"list", "a", "--format", "csv"}).out,
            "ticks,seconds,type,code,subject,subject_id,running,running_id\r\n2,,switch,4,T,5,,\r\n");
  EXPECT_TRUE(nlohmann::json::parse(RunTasklog(folder, {"list", "a", "--format", "json"}).out)[0]["seconds"]
                  .is_null());
  EXPECT_EQ(Listed(folder, {"a", "--from", "2"}), std::vector<std::string>{"2"});
  const Result result = RunTasklog(folder, {"list", "a", "--from", "1us"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err,
            "tasklog: listing 'a': its tick rate is unknown, so --from and --to take only ticks\n");
}

TEST(List, RefusesBoundsTheWrongWayRound) {
  const TempFolder folder;
  folder.Write("a", ExampleFile());
  const Result result = RunTasklog(folder, {"list", "a", "--from", "2ms", "--to", "2999"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.err, "tasklog: list: --from is later than --to\n");
}

TEST(List, EndsQuietlyWhenNobodyReads) {
  const TempFolder folder;
  folder.Write("a", ExampleFile());
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  ::close(ends[0]);
  const Result result = Program(folder, {"list", "a"}, {.stdoutFd = ends[1]}).Wait();
  ::close(ends[1]);
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.err, "");
}

TEST(List, ReportsOutputThatCannotBeWritten) {
  const TempFolder folder;
  folder.Write("a", ExampleFile());
  const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
  const Result result = Program(folder, {"list", "a"}, {.stdoutFd = full}).Wait();
  ::close(full);
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.err, "tasklog: writing to standard output: No space left on device\n");
}

}  // namespace
