// One log that nothing changes, read by several threads.
#include <gtest/gtest.h>

#include <array>

#include "support/taskfile.h"
#include "threads/machine.h"

namespace {

// 200 ms of both loggers.
LogPtr Recorded(const Machine& machine) {
  LogPtr log = NewLog();
  for (int reading = 0; reading < 100; ++reading) {
    EXPECT_EQ(machine.Append(log.get(), scheduler), 0u);
    EXPECT_EQ(machine.Append(log.get(), 1), 0u);
  }
  return log;
}

// All that can be asked of a log, the last by way of a file.
struct Answers {
  explicit Answers(TLTaskLog log)
      : entries(DumpEntries(log)), categories(DumpCategories(log)), times(DumpTimes(log)) {
    const TLCategory control = CategoryNamed(log, "Control");
    ofControl = DumpEntries(log, control, TL_LOGS_SWITCHES);
    const std::uint64_t from = TLTaskLogGetStartTime(log) + 50'000;
    const std::uint64_t to = from + 20'000;
    window = DumpEntries(log, nullptr, 0, from, to);
    counts = {TLTaskLogGetEntriesCount(log, nullptr, 0, 0, UINT64_MAX),
              TLTaskLogGetEntriesCount(log, control, 0, 0, UINT64_MAX),
              TLTaskLogGetEntriesCount(log, nullptr, 0, from, to),
              TLTaskLogGetCategoriesCount(log, 0, nullptr)};
    const TempFile copy;
    EXPECT_EQ(TLTaskLogSaveAsFile(log, copy.CPath()), 0u);
    file = ReadBytes(copy.Path());
  }
  bool operator==(const Answers&) const = default;

  std::string entries, categories, times, ofControl, window;
  std::array<std::uint64_t, 4> counts;
  Bytes file;
};

constexpr int rounds = 4;

// First beside each other, then while another log is filled, too.
TEST(ReadingThreads, GetTheAnswersThatOneThreadGets) {
  const Machine machine;
  const LogPtr log = Recorded(machine);
  const Answers expected(log.get());
  EXPECT_EQ(expected.counts[0], 801u + 498u);  // kernel 1 up to 200 ms, the scheduler up to 199 ms
  EXPECT_EQ(CountIn(expected.window), 133u);
  for (const bool filling : {false, true}) {
    InThreads([&](int number) {
      if (filling && number == 0) Recorded(machine);
      for (int round = 0; round < rounds; ++round) EXPECT_TRUE(Answers(log.get()) == expected);
    });
  }
}

}  // namespace
