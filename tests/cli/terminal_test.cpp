// What is different on a terminal.
#include <gtest/gtest.h>

#include "cli/program.h"
#include "cli/scenarios.h"

namespace {

const std::vector<std::string> record = {"record", "m.toml", "--start", "-o", "a"};

TEST(Terminal, ShowsProgressAndTakesItAwayAgain) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64));
  const Result result = Program(folder, record, {.onTerminal = true}).Wait();
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_NE(result.out.find("\r\x1b[Kreading m.toml [\x1b[32m"), std::string::npos);
  const std::string end = "\r\x1b[Ka: 5 entries over 0.013000 s\r\n";
  EXPECT_TRUE(result.out.ends_with("100 %" + end)) << result.out;
}

TEST(Terminal, HasNoColorsWhenNotWanted) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64));
  const Result plain = Program(folder, record, {.environment = {"NO_COLOR=1"}, .onTerminal = true}).Wait();
  EXPECT_NE(plain.out.find("\r\x1b[Kreading m.toml [----"), std::string::npos);
  EXPECT_EQ(plain.out.find("\x1b[32m"), std::string::npos);
  const Result dumb = Program(folder, record, {.environment = {"TERM=dumb"}, .onTerminal = true}).Wait();
  EXPECT_EQ(dumb.out, "a: 5 entries over 0.013000 s\r\n");
}

TEST(Terminal, MarksWhatIsNoSwitchInAList) {
  const TempFolder folder;
  folder.Write("a", ExampleFile());
  EXPECT_EQ(Program(folder, {"list", "a"}, {.onTerminal = true}).Wait().out,
            "time [s]  type       subject  running\r\n"
            "0.000000  switch     Idle     -\r\n"
            "0.001000  switch 0   Ctrl     Idle\r\n"
            "0.002000  \x1b[36mtestpoint\x1b[0m  TP1      Ctrl\r\n"
            "0.003000  switch 0   Idle     Ctrl\r\n"
            "0.003500  \x1b[1;31missue    \x1b[0m  OVRN     Idle\r\n");
  EXPECT_EQ(Program(folder, {"list", "a"}, {.environment = {"NO_COLOR=1"}, .onTerminal = true})
                .Wait()
                .out.find('\x1b'),
            std::string::npos);
}

}  // namespace
