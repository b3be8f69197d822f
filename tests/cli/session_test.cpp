// Sessions at a shell, written down in tests/*/sessions/*.txt: "$ " begins a command, "> " goes on with it,
// and what follows is all that it prints, with [N] behind it when it fails. "# " begins a comment. Each
// session has a folder of its own with the files below.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "cli/program.h"
#include "cli/scenarios.h"

namespace {

namespace fs = std::filesystem;

// A log of two tasks, a testpoint and an issue: five entries from 1000 to 4500 ticks, at 1 MHz. Reading adds
// Idle's switch at the start to the four that the records say.
Bytes ExampleFile() {
  return TaskFile({.startTime = 1000, .stopTime = 5000},
                  {{"Idle", 0, 10, {{2, 0, 1000}, {5, 2, 2000}, {2, 1, 4000}, {3, 0, 5000}}},
                   {"Ctrl", 5, -1, {{4, 0, 1000}, {2, 2, 2000}, {5, 1, 4000}, {2, 0, 5000}}}},
                  std::vector<FileRecord>{{3, 0, 1000}, {7, 9, 3000, "TP1"}},
                  std::vector<FileRecord>{{3, 0, 1000}, {8, 0, 4500, "OVRN"}});
}

void WriteFiles(const TempFolder& folder) {
  const FileHeader header{.startTime = 1000, .stopTime = 2000};
  const FileHeader rateless{.startTime = 1, .stopTime = 9, .tickRate = 0};
  folder.Write("example", ExampleFile());
  folder.Write("twins", TaskFile(header, {{"Twin", 1, 0, {{2, 5, 1002}}},
                                          {"Other", 1, 0, {{2, 6, 1003}}},
                                          {"Twin", 2, 0, {{2, 7, 1004}}}}));
  folder.Write("outside", TaskFile(header, {{"T", 1, 0, {{2, 1, 500}, {2, 1, 1500}, {2, 1, 2500}}}}));
  folder.Write("rateless", TaskFile(rateless, {{"T", 1, 0, {{2, 5, 2}}}}));
  folder.Write("backwards", TaskFile({.startTime = 9000, .stopTime = 2000, .tickRate = 0}, {}));
  folder.Write("newer", TaskFile({.baseVersion = 0x0104}, {}));
  folder.Write("fast", TaskFile({.startTime = 1000, .stopTime = 4'000'001'000, .tickRate = 33'333'333},
                                {{"T", 1, 0, {{2, 1, 1001}, {2, 1, 33'334'332}, {2, 1, 4'000'000'999}}}}));
  folder.Write("finest", TaskFile({.stopTime = UINT64_MAX, .tickRate = UINT32_MAX},
                                  {{"T", 1, 0, {{2, 1, 4'294'967'294}, {2, 1, UINT64_MAX - 1}}}}));
  folder.Write("hostile", TaskFile(header, {{"\x1b]0;x\x07,\"\n\xff", 1, 0, {{2, 5, 1002}}}}));
  folder.Write("m.toml", SteppedScenario("20ms", 64));
  folder.Write("machine.toml", SteppedScenario("50ms", 64) + SteppedKernel(1) + SteppedKernel(2));
}

// To look for them takes a third of most commands. The simulator's own tests look for its leaks, and wrong
// arguments and help lead no further.
bool LooksForLeaks(const fs::path& session) {
  const std::string name = session.stem();
  return session.parent_path().parent_path().filename() != "sim" && name != "help" && name != "usage";
}

std::string OutputOf(const TempFolder& folder, const std::string& setting, const std::string& command) {
  const Result result = Program(folder, {"sh", "-c", "exec 2>&1\n" + setting + "\n" + command}).Wait();
  return result.out + (result.exitCode == 0 ? "" : "[" + std::to_string(result.exitCode) + "]\n");
}

std::vector<fs::path> Sessions() {
  std::vector<fs::path> sessions;
  for (const auto& item : fs::recursive_directory_iterator(TASKLOG_TESTS_DIR)) {
    const fs::path folder = item.path().parent_path();
    if (folder.filename() == "sessions" && folder.parent_path().filename() != TASKLOG_WITHOUT)
      sessions.push_back(item.path());
  }
  std::sort(sessions.begin(), sessions.end());  // alike in each shard
  return sessions;
}

class Session : public testing::TestWithParam<fs::path> {};

TEST_P(Session, IsAsWrittenDown) {
  const TempFolder folder;
  WriteFiles(folder);
  std::ifstream file(GetParam());
  const std::string setting = LooksForLeaks(GetParam()) ? "" : "export ASAN_OPTIONS=detect_leaks=0";
  std::string line, command, expected;
  const auto check = [&] {
    if (!command.empty()) {
      EXPECT_EQ(OutputOf(folder, setting, command), expected) << "$ " << command;
    }
    command = expected = "";
  };
  while (std::getline(file, line)) {
    if (line.starts_with("$ ") || line.starts_with("# ")) check();
    if (line.starts_with("$ ")) {
      command = line.substr(2);
    } else if (line.starts_with("> ")) {
      command += "\n" + line.substr(2);
    } else if (!line.starts_with("# ")) {
      expected += line + "\n";
    }
  }
  ASSERT_FALSE(command.empty());
  check();
}

INSTANTIATE_TEST_SUITE_P(All, Session, testing::ValuesIn(Sessions()),
                         [](const auto& session) { return session.param.stem().string(); });

}  // namespace
