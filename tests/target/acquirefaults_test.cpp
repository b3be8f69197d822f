// Progress, cancelling, failing calls and failing allocations of an append from a target, at every point.
#include <gtest/gtest.h>

#include "support/allocations.h"
#include "support/logs.h"

namespace {

// Of NewLogWithEntry() before and after it has read the controller below.
constexpr char entriesBefore[] = "500 4 File -";
constexpr char timesBefore[] = "400 600 50";
constexpr char rateRead[] = "400 600 1000000";
constexpr char timesAfter[] = "400 1030 1000000";

std::string EntriesAfter(const std::string& task = "Idle", const std::string& testpoint = "TP1") {
  return "500 4 File -; 1000 4 " + task + " File; 1010 6 " + testpoint + " " + task + "; 1020 7 STKO " +
         task + "; 1030 4 0x00000063 " + task;
}

// Reads kernel 1 of a controller: a task, a testpoint, a timing issue, and a task it does not list.
class Reading {
 public:
  Reading() {
    PutCategories(target);
    PutLogger(target, "Kernel.1.Logger",
              RingWords(1000, {{4, 1000, 1}, {6, 1010, 0x9000}, {7, 1020, 0x53544B4F}, {4, 1030, 99}}));
  }
  std::uint32_t Append(TLProgress progress = nullptr, void* user = nullptr) {
    return TLTaskLogAppendFromTarget(log.get(), "ctl/@2", 1, progress, user);
  }
  void ExpectLog(const std::string& entries, const std::string& times) const {
    EXPECT_EQ(DumpEntries(log.get()), entries);
    EXPECT_EQ(DumpTimes(log.get()), times);
  }

  ScriptedTarget target;
  const LogPtr log = NewLogWithEntry();
};

TEST(AcquireCalls, ComeInOrder) {
  Reading reading;
  EXPECT_EQ(reading.Append(), 0u);
  EXPECT_EQ(reading.target.CallsOf(),
            "GetVariable(ctl/@1, Target.Mpu.Resolution, 0); "
            "GetVariable(ctl/@1, Kernel.1.Logger.BufferSize, 0); "
            "GetVariable(ctl/@1, Kernel.1.Logger.BufferAddress, 0); GetBlock32(ctl/@1, 4096, 10); "
            "DbgTasksList(ctl/@1, 0); DbgTasksList(ctl/@1, +0, 16); "
            "DbgTaskGetName(ctl/@1, 0x1, 255); DbgTaskGetData(ctl/@1, 0x1, 0x80000002, 4); "
            "DbgTaskGetData(ctl/@1, 0x1, 0x1, 4); "
            "DbgTaskGetName(ctl/@1, 0x2, 255); DbgTaskGetData(ctl/@1, 0x2, 0x80000002, 4); "
            "DbgTaskGetData(ctl/@1, 0x2, 0x1, 4); "
            "DbgTaskGetName(ctl/@1, 0x3, 255); DbgTaskGetData(ctl/@1, 0x3, 0x80000002, 4); "
            "DbgTaskGetData(ctl/@1, 0x3, 0x1, 4); "
            "GetVariable(ctl/@1, Watchpoint.Entity!Objects, 0); "
            "GetVariable(ctl/@1, Watchpoint.Entity!Object0, 255); "
            "GetVariable(ctl/@1, Watchpoint.Entity.TP1.Prop.Address, 0); "
            "GetVariable(ctl/@1, Watchpoint.Entity!Object1, 255); "
            "GetVariable(ctl/@1, Watchpoint.Entity.TP2.Prop.Address, 0)");
  reading.ExpectLog(EntriesAfter(), timesAfter);
}

TEST(AcquireCalls, EndTheAppendOrCompleteItWhenOneFails) {
  for (std::uint32_t call = 1; call <= 20; ++call) {
    SCOPED_TRACE(call);
    Reading reading;
    reading.target.failingCalls[call] = 0xBAD00 + call;
    EXPECT_EQ(reading.Append(), 0xBAD00 + call);
    if (call <= 4) {
      reading.ExpectLog(entriesBefore, call == 1 ? timesBefore : rateRead);
      EXPECT_EQ(TLTaskLogGetCategoriesCount(reading.log.get(), 0, nullptr), 1u);
      continue;
    }
    // From the task list on, a failure only costs the names that were not yet read.
    reading.ExpectLog(
        EntriesAfter(call < 10 ? "0x00000001" : "Idle", call >= 16 && call <= 18 ? "0x00009000" : "TP1"),
        timesAfter);
    const std::uint32_t tasksRead = call < 10 ? 0 : call < 13 ? 1 : call < 16 ? 2 : 3;
    EXPECT_EQ(TLTaskLogGetCategoriesCount(reading.log.get(), TL_CATS_TASKS, nullptr),
              1 + tasksRead + (call < 10 ? 2 : 1));
  }
}

TEST(AcquireCalls, ReportTheLastFailedFetch) {
  Reading reading;
  reading.target.failures = {{"DbgTasksList", 0x111}, {"Objects", 0x222}};
  EXPECT_EQ(reading.Append(), 0x222u);
  reading.ExpectLog(EntriesAfter("0x00000001", "0x00009000"), timesAfter);
}

// A callback that records its points and, at one of them, stores into the flag.
struct Watcher {
  std::size_t storingPoint = SIZE_MAX;
  int stored = 0;
  std::vector<double> fractions = {};
  std::vector<int> flags = {};
  TLTaskLog log = nullptr;

  static void Call(TLTaskLog log, double fraction, std::int32_t* proceed, void* user) {
    auto* self = static_cast<Watcher*>(user);
    self->log = log;
    self->flags.push_back(*proceed);
    if (self->fractions.size() == self->storingPoint) *proceed = self->stored;
    self->fractions.push_back(fraction);
  }
};

using Fractions = std::vector<double>;

TEST(AcquireProgress, TellsExactFractions) {
  Reading reading;
  Watcher watcher;
  EXPECT_EQ(reading.Append(&Watcher::Call, &watcher), 0u);
  EXPECT_EQ(watcher.fractions,
            (Fractions{0.0, 0.01, 0.02, 0.03, 0.75, 0.81, 0.86, 0.9, 0.9400000000000001, 1.0}));
  EXPECT_EQ(watcher.log, reading.log.get());
}

TEST(AcquireProgress, CountsKnownRecordsAndBothLapsOverTheWholeBuffer) {
  const std::pair<std::vector<std::uint32_t>, Fractions> cases[] = {
      {RingWords(1000, Laps({{7, 1000, 0x41424344}, {7, 1010, 0x41424344}},
                            {{7, 980, 0x41424344}, {7, 990, 0x41424344}})),
       {0.0, 0.01, 0.02, 0.03, 0.75, 0.7833333333333333, 0.8166666666666667, 0.85, 0.8833333333333333, 1.0}},
      {{3, 4}, {0.0, 0.01, 0.02, 0.03, 0.75, 1.0}},
      {{3}, {0.0, 0.01, 0.02, 1.0}},
  };
  for (const auto& [words, fractions] : cases) {
    Reading reading;
    PutLogger(reading.target, "Kernel.1.Logger", words);
    for (int repetition = 1; repetition <= 2; ++repetition) {
      Watcher watcher;
      EXPECT_EQ(reading.Append(&Watcher::Call, &watcher), 0u);
      EXPECT_EQ(watcher.fractions, fractions) << repetition;
    }
  }
}

TEST(AcquireProgress, CancelsAtEveryPointButTheLast) {
  // Categories at each point: that of the file, then tasks, testpoints, the issue, the placeholder.
  constexpr std::uint32_t categories[] = {1, 1, 1, 1, 1, 4, 6, 7, 8, 8};
  for (std::size_t point = 0; point < 10; ++point) {
    SCOPED_TRACE(point);
    Reading reading;
    Watcher watcher{.storingPoint = point};
    const bool canceled = point < 9;
    EXPECT_EQ(reading.Append(&Watcher::Call, &watcher), canceled ? TLErrCanceled : TL_OK);
    EXPECT_EQ(watcher.fractions.size(), point + 1);
    reading.ExpectLog(canceled ? entriesBefore : EntriesAfter(), point == 0 ? timesBefore
                                                                 : canceled ? rateRead
                                                                            : timesAfter);
    EXPECT_EQ(TLTaskLogGetCategoriesCount(reading.log.get(), 0, nullptr), categories[point]);
  }
}

TEST(AcquireProgress, CancelsInThePreviousLapToo) {
  Reading reading;
  PutLogger(reading.target, "Kernel.1.Logger",
            RingWords(1000, Laps({{4, 1000, 1}}, {{4, 980, 1}, {4, 990, 2}})));
  Watcher watcher{.storingPoint = 6};
  EXPECT_EQ(reading.Append(&Watcher::Call, &watcher), TLErrCanceled);
  EXPECT_EQ(watcher.fractions.size(), 7u);
  reading.ExpectLog(entriesBefore, rateRead);
}

TEST(AcquireProgress, TakesOnlyZeroForCancelAndKeepsTheFlag) {
  Reading reading;
  Watcher watcher{.storingPoint = 1, .stored = -7};
  EXPECT_EQ(reading.Append(&Watcher::Call, &watcher), 0u);
  EXPECT_EQ(watcher.flags, (std::vector<int>{1, 1, -7, -7, -7, -7, -7, -7, -7, -7}));
}

TEST(AcquireMemory, RunningOutLeavesTheEntriesAndAReadingAfterThatSucceeds) {
  bool failed = true;
  for (std::size_t allocation = 1; failed; ++allocation) {
    SCOPED_TRACE(allocation);
    Reading reading;
    std::uint32_t status = 0;
    {
      const AllocationWatch watch(allocation);
      status = reading.Append();
      failed = watch.Failed();
    }
    ASSERT_EQ(status, failed ? TLErrOutOfMemory : TL_OK);
    EXPECT_EQ(DumpEntries(reading.log.get()), failed ? entriesBefore : EntriesAfter());
    EXPECT_EQ(reading.Append(), 0u);
    reading.ExpectLog(EntriesAfter(), timesAfter);
    EXPECT_EQ(TLTaskLogGetCategoriesCount(reading.log.get(), TL_CATS_TASKS, nullptr), 5u);
  }
}

}  // namespace
