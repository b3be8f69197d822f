// What is typed wrong, and the help.
#include <gtest/gtest.h>

#include "cli/program.h"

namespace {

TEST(Usage, IsExplainedInOneLine) {
  struct Case {
    std::vector<std::string> arguments;
    const char* line;
  };
  const Case cases[] = {
      {{}, "no command given ('tasklog --help' lists the commands)"},
      {{"lsit", "a"}, "unknown command 'lsit'; did you mean 'list'?"},
      {{"export"}, "unknown command 'export' ('tasklog --help' lists the commands)"},
      {{"--verison"}, "unknown option '--verison'; did you mean '--version'?"},
      {{"info\n"}, "unknown command 'info\\x0A'; did you mean 'info'?"},
      {{"info"}, "info: FILE is required ('tasklog info --help' shows the usage)"},
      {{"list", "a", "--formt=csv"}, "list: unknown option '--formt'; did you mean '--format'?"},
      {{"list", "a", "-x"}, "list: unknown option '-x' ('tasklog list --help' lists the options)"},
      {{"list", "a", "b"}, "list: unexpected argument 'b' ('tasklog list --help' shows the usage)"},
      {{"list", "a", "--format", "cvs"},
       "--format: 'cvs' is not 'text', 'csv' or 'json'; did you mean 'csv'?"},
      {{"list", "a", "--type", "switch", "--type", "isue"},
       "--type: 'isue' is not 'switch', 'event', 'testpoint' or 'issue'; did you mean 'issue'?"},
      {{"list", "a", "--from", "1.5"},
       "--from: '1.5' is not a time such as 1.5s, 250ms or 12us, nor a number of ticks"},
      {{"list", "a", "--to", ""},
       "--to: '' is not a time such as 1.5s, 250ms or 12us, nor a number of ticks"},
      {{"list", "a", "--limit", "-1"}, "--limit: '-1' is not a number"},
      {{"list", "a", "--task"}, "list: --task needs a value ('tasklog list --help' shows the usage)"},
      {{"list", "a", "--limit", "1", "--limit", "2"},
       "list: --limit is given more than once ('tasklog list --help' shows the usage)"},
      {{"record", "demo"}, "record: --output is required ('tasklog record --help' shows the usage)"},
      {{"record", "demo", "-o", ""}, "--output: the name is empty"},
      {{"record", "demo", "-o", "a", "--every", "1s"}, "--every takes effect only with --for"},
      {{"record", "demo", "-o", "a", "--trigger", "T"}, "--trigger takes effect only with --start"},
      {{"record", "demo", "-o", "a", "--for", "10"}, "--for: '10' is not a duration such as 10s or 250ms"},
      {{"record", "demo", "-o", "a", "--for", "10s", "--every", "10us"},
       "--every: '10us' is too short, the least is 1 ms"},
      {{"record", "demo", "-o", "a", "--logger", "schedular"},
       "--logger: 'schedular' is not 'scheduler', 'all' or the number of a kernel; did you mean "
       "'scheduler'?"},
      {{"record", "demo", "-o", "a", "--logger", "2147483648"},
       "--logger: '2147483648' is not 'scheduler', 'all' or the number of a kernel"},
  };
  const TempFolder folder;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.line);
    const Result result = RunTasklog(folder, c.arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, std::string("tasklog: ") + c.line + "\n");
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{});
}

TEST(Usage, HelpHasAnExampleEverywhere) {
  const TempFolder folder;
  const std::vector<std::vector<std::string>> questions = {
      {"--help"}, {"-h"}, {"start", "-h"}, {"record", "--help"}, {"info", "--help"}, {"list", "-h"}};
  for (const auto& question : questions) {
    SCOPED_TRACE(question.front());
    const Result result = RunTasklog(folder, question);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    const std::string command = question.size() == 1 ? "record" : question.front();
    EXPECT_NE(result.out.find("\n  tasklog " + command + " "), std::string::npos) << result.out;
  }
  EXPECT_EQ(RunTasklog(folder, {"--version"}).out, "tasklog 0.1.0\n");
}

}  // namespace
