// Several threads, each with a log of its own, over one controller.
#include <gtest/gtest.h>

#include <atomic>

#include "threads/machine.h"

namespace {

constexpr int readings = 25;

TEST(AppendingThreads, ReadWhatTheControllerWrote) {
  const Machine machine;
  std::string dumps[threadCount];
  InThreads([&](int number) {
    const LogPtr log = NewLog();
    for (int i = 0; i < readings; ++i) ASSERT_EQ(machine.Append(log.get(), 1), 0u);
    dumps[number] = DumpEntries(log.get());
  });
  const LogPtr whole = NewLog();
  EXPECT_EQ(machine.Append(whole.get(), 1), 0u);
  // A start, then four records in each of the milliseconds that the readings took, this one included.
  EXPECT_EQ(TLTaskLogGetEntriesCount(whole.get(), nullptr, 0, 0, UINT64_MAX),
            1u + 4u * (threadCount * readings + 1));
  const std::string written = DumpEntries(whole.get());
  for (const std::string& dump : dumps) {
    EXPECT_GE(CountIn(dump), 1u + 4u * readings);
    EXPECT_EQ(written.substr(0, dump.size()), dump);
  }
}

TEST(AppendingThreads, MayStartLoggersAndCancelMeanwhile) {
  const Machine machine;
  const auto cancelAtTheEnd = [](TLTaskLog, double fraction, std::int32_t* proceed, void* user) {
    if (fraction >= 0.75) *proceed = 0;
    ++*static_cast<int*>(user);
  };
  std::atomic<int> started = 0;
  InThreads([&](int number) {
    const LogPtr log = NewLog();
    for (int i = 0; i < readings; ++i) {
      if (number == 0 && TLStartLog(machine.Target(), "Monitor") == TL_OK) ++started;
      int points = 0;
      EXPECT_EQ(machine.Append(log.get(), scheduler, cancelAtTheEnd, &points), TLErrCanceled);
      EXPECT_EQ(points, 5);
      EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), nullptr, 0, 0, UINT64_MAX), 0u);
    }
  });
  EXPECT_EQ(started, readings);
}

}  // namespace
