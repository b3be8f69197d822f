// Appending from a target: what is read from where, how new entries join those of the log, and progress.
#include <gtest/gtest.h>

#include "support/logs.h"

namespace {

TEST(Acquire, AddsWhatIsNewAndCountsTimeThroughKnownRecords) {
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, {{4, 1000, 1}, {4, 500, 2}, marker})), 0u);
  // 500 lies in the span after 1000, 400 in the span after that.
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, {{4, 1000, 1}, {4, 500, 2}, {4, 400, 3}})), 0u);
  EXPECT_EQ(DumpEntries(log.get()), "1000 4 Idle -; 66036 4 Ctrl Idle; 131472 4 Comm Ctrl");
  // Another logger's records fall between those that are there.
  EXPECT_EQ(AppendRing(log.get(), RingWords(0x10000, Laps({{2, 66036, 3}}, {{2, 65000, 2}}))), 0u);
  EXPECT_EQ(DumpEntries(log.get()),
            "1000 4 Idle -; 65000 2 Ctrl Idle; 66036 4 Ctrl Idle; 66036 2 Comm Ctrl; 131472 4 Comm Ctrl");
}

TEST(Acquire, PlacesEqualTimesBehindOldEntriesForwardAndBeforeThemBackward) {
  const LogPtr log = NewLogWithEntry();
  EXPECT_EQ(AppendRing(log.get(), RingWords(500, Laps({{2, 500, 2}}, {{2, 500, 1}}))), 0u);
  EXPECT_EQ(DumpEntries(log.get()), "500 2 Idle -; 500 4 File -; 500 2 Ctrl File");
}

TEST(Acquire, FillsInTheTasksOfBothLaps) {
  const LogPtr log = NewLogWithEntry();
  EXPECT_EQ(AppendRing(log.get(), RingWords(590, Laps({{4, 600, 1}, {4, 700, 2}, {2, 800, 3}},
                                                      {{4, 200, 1}, {4, 300, 2}}))),
            0u);
  EXPECT_EQ(
      DumpEntries(log.get()),
      "200 4 Idle -; 300 4 Ctrl Idle; 500 4 File Ctrl; 600 4 Idle File; 700 4 Ctrl Idle; 800 2 Comm Ctrl");
}

TEST(Acquire, WidensThePeriodToCoverAllEntries) {
  const auto oneRecord = RingWords(1000, {{4, 1000, 1}});
  const struct {
    const char* name;
    std::uint64_t start, stop;  // before, in a log with an entry at 500
    std::vector<std::uint32_t> words;
    const char* expected;
  } cases[] = {
      {"behind", 400, 600, oneRecord, "400 1000 1000000"},
      {"unset, header only", 0, 0, RingWords(1000, {}), "500 500 1000000"},
      {"unset, less than a header", 0, 0, {7}, "0 0 1000000"},
  };
  for (const auto& c : cases) {
    const LogPtr log = NewLog();
    const FileHeader header{.startTime = c.start, .stopTime = c.stop};
    EXPECT_EQ(AppendBytes(log.get(), TaskFile(header, {{"File", 1, 2, {{2, 0, 500}}}})), 0u);
    EXPECT_EQ(AppendRing(log.get(), c.words), 0u);
    EXPECT_EQ(DumpTimes(log.get()), c.expected) << c.name;
  }
}

// A caller may walk the log while records arrive: what was held before the append stays where it is until the
// last call.
TEST(Acquire, LeavesHeldEntriesInPlaceWhileRecordsArrive) {
  const auto row = [](std::uint64_t begin, std::size_t count) {
    std::vector<RingRecord> records;
    for (std::size_t i = 0; i < count; ++i) records.push_back({2, begin + 10 * i, 1});
    return RingWords(begin, records);
  };
  struct Walk {
    explicit Walk(TLTaskLog walked) : iterator(TLTaskLogGetEntries(walked, nullptr, 0, 0, UINT64_MAX)) {}
    ~Walk() { TLEntryIteratorDestroy(iterator); }
    TLEntryIterator iterator;
    std::uint64_t sum = 0;
  };
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), row(1000, 6000)), 0u);
  ScriptedTarget target;
  PutCategories(target);
  for (const std::uint64_t begin : {1005, 200'000}) {  // between what is held, and behind it
    PutLogger(target, "Scheduler.Logger", row(begin, 8000));
    Walk walk(log.get());
    const auto advance = [](TLTaskLog, double done, std::int32_t*, void* user) {
      Walk& walked = *static_cast<Walk*>(user);
      if (done == 1.0) return;  // merged
      if (const TLEntry entry = TLEntryIteratorNext(walked.iterator))
        walked.sum += TLEntryGetTimestamp(entry);
    };
    EXPECT_EQ(TLTaskLogAppendFromTarget(log.get(), "ctl", -1, advance, &walk), 0u);
    if (begin == 1005) {
      EXPECT_EQ(walk.sum, 6000u * 1000 + 10u * 6000 * 5999 / 2);
    }
  }
  EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), nullptr, 0, 0, UINT64_MAX), 22000u);
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
  EXPECT_EQ(DumpEntries(reading.log.get()),
            "500 4 File -; 1000 4 Idle File; 1010 6 TP1 Idle; 1020 7 STKO Idle; 1030 4 0x00000063 Idle");
}

TEST(AcquireCalls, ThatFailWhenNamesAreFetchedCostTheseOnlyAndTheLastIsReported) {
  Reading reading;
  reading.target.failures = {{"DbgTasksList", 0x111}, {"Objects", 0x222}};
  EXPECT_EQ(reading.Append(), 0x222u);
  EXPECT_EQ(DumpEntries(reading.log.get()),
            "500 4 File -; 1000 4 0x00000001 File; 1010 6 0x00009000 0x00000001; "
            "1020 7 STKO 0x00000001; 1030 4 0x00000063 0x00000001");
  EXPECT_EQ(DumpTimes(reading.log.get()), "400 1030 1000000");
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

TEST(AcquireProgress, TellsExactFractionsAndTakesOnlyZeroForCancel) {
  Reading reading;
  Watcher watcher{.storingPoint = 1, .stored = -7};
  EXPECT_EQ(reading.Append(&Watcher::Call, &watcher), 0u);
  EXPECT_EQ(watcher.fractions,
            (std::vector<double>{0.0, 0.01, 0.02, 0.03, 0.75, 0.81, 0.86, 0.9, 0.9400000000000001, 1.0}));
  EXPECT_EQ(watcher.flags, (std::vector<int>{1, 1, -7, -7, -7, -7, -7, -7, -7, -7}));
  EXPECT_EQ(watcher.log, reading.log.get());
}

}  // namespace
