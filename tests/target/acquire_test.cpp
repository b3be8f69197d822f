// Appending from a target: what is read from where, and how new entries join those of the log.
#include <gtest/gtest.h>

#include <cmath>

#include "support/logs.h"

namespace {

constexpr RingRecord issue{7, 1000, 0x53544B4F};

void ExpectReadThrough(const char* given, std::int32_t kernel, const std::string& name,
                       const std::string& logger) {
  SCOPED_TRACE(testing::Message() << given << ' ' << kernel);
  ScriptedTarget target;
  PutLogger(target, logger, RingWords(1000, {issue}));
  const LogPtr log = NewLog();
  EXPECT_EQ(TLTaskLogAppendFromTarget(log.get(), given, kernel, nullptr, nullptr), 0u);
  EXPECT_EQ(target.CallsOf(), "GetVariable(" + name + ", Target.Mpu.Resolution, 0); " + "GetVariable(" +
                                  name + ", " + logger + ".BufferSize, 0); " + "GetVariable(" + name + ", " +
                                  logger + ".BufferAddress, 0); " + "GetBlock32(" + name + ", 4096, 4)");
  EXPECT_EQ(DumpEntries(log.get()), "1000 7 STKO -");
}

TEST(Acquire, ReadsTheLoggerOfTheKernelThroughItsTargetName) {
  ExpectReadThrough("ctl/@2", 3, "ctl/@3", "Kernel.3.Logger");
  ExpectReadThrough("ctl\\@5", -1, "ctl", "Scheduler.Logger");
  ExpectReadThrough("/@1", -1, "", "Scheduler.Logger");
  ExpectReadThrough("ctl/@2", 0, "ctl", "Kernel.0.Logger");
  ExpectReadThrough("ctl/@9", 2, "ctl/@9/@2", "Kernel.2.Logger");
  ExpectReadThrough("ctl", -2, "ctl", "Kernel.-2.Logger");
  ExpectReadThrough("ctl", INT32_MIN, "ctl", "Kernel.-2147483648.Logger");
}

TEST(Acquire, ReadsWholeWordsOfTheBufferAndWholeSlots) {
  const struct {
    double sizeBytes;
    unsigned words;  // transferred; 0: neither the address nor the buffer is read
    std::size_t entries;
  } cases[] = {
      {0, 0, 0},    {3, 0, 0},    {4, 0, 0},     {7.99, 0, 0},   {8, 2, 0},           {11, 2, 0},
      {12, 3, 0},   {15.9, 3, 0}, {16, 4, 1},    {20, 5, 1},     {23, 5, 1},          {24, 6, 2},
      {-0.5, 0, 0}, {NAN, 0, 0},  {1e300, 0, 0}, {0x1p63, 0, 0}, {0x1p32 + 16, 4, 1}, {-0x1p32 + 16, 4, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.sizeBytes);
    ScriptedTarget target;
    PutLogger(target, "Kernel.1.Logger", RingWords(1000, {issue, {7, 1001, 0x53544B4F}}));
    target.numbers["Kernel.1.Logger.BufferSize"] = c.sizeBytes;
    const LogPtr log = NewLog();
    EXPECT_EQ(TLTaskLogAppendFromTarget(log.get(), "ctl", 1, nullptr, nullptr), 0u);
    EXPECT_EQ(CountIn(DumpEntries(log.get())), c.entries);
    const std::string transfer = "GetBlock32(ctl/@1, 4096, " + std::to_string(c.words) + ")";
    EXPECT_EQ(target.CallsOf("GetBlock32"), c.words ? transfer : "");
    EXPECT_EQ(target.calls.size(), c.words ? 4u : 2u);
  }
}

TEST(Acquire, TruncatesTheBufferAddress) {
  const std::pair<double, std::int64_t> cases[] = {{4096.9, 4096}, {-16.9, -16}, {-0x1p63, INT64_MIN},
                                                   {0x1p63, 0},    {NAN, 0},     {0x1p40, 0x10000000000}};
  for (const auto& [value, address] : cases) {
    ScriptedTarget target;
    PutLogger(target, "Scheduler.Logger", RingWords(1000, {issue}));
    target.numbers["Scheduler.Logger.BufferAddress"] = value;
    target.memory = {{address, RingWords(1000, {issue})}};
    const LogPtr log = NewLog();
    EXPECT_EQ(TLTaskLogAppendFromTarget(log.get(), "ctl", -1, nullptr, nullptr), 0u) << value;
  }
}

TEST(Acquire, RefusesANullTargetBeforeAnything) {
  ScriptedTarget target;
  const LogPtr log = NewLog();
  const auto progress = [](TLTaskLog, double, std::int32_t*, void*) { ADD_FAILURE() << "progress"; };
  EXPECT_EQ(TLTaskLogAppendFromTarget(log.get(), nullptr, 1, progress, nullptr), TLErrCanceled);
  EXPECT_EQ(target.CallsOf(), "");
}

TEST(Acquire, AddsNothingOnARereadOfTheSameRecords) {
  // The codes 0x00000003 and 0x80000003 are not printable.
  const auto words =
      RingWords(1000, Laps({{4, 1000, 1}, {6, 1010, 0x9000}, {7, 1030, 3}, {7, 1030, 0x80000003}},
                           {issue, {2, 1000, 77}, {6, 1000, 0x77}, {9, 1000, 2}}));
  const LogPtr log = NewLog();
  for (int reading = 1; reading <= 3; ++reading) {
    EXPECT_EQ(AppendRing(log.get(), words), 0u);
    EXPECT_EQ(DumpEntries(log.get()),
              "1000 7 STKO -; 1000 2 0x0000004D -; 1000 6 0x00000077 -; 1000 9 Ctrl -; 1000 4 Idle -; "
              "1010 6 TP1 Idle; 1030 7 0x00000003 Idle; 1030 7 0x80000003 Idle");
    EXPECT_EQ(TLTaskLogGetCategoriesCount(log.get(), 0, nullptr), 10u);
  }
}

TEST(Acquire, ComparesTasksByIdWhateverTheirNames) {
  ScriptedTarget target;
  target.tasks = {{5, "ABCD", 0, 0}};
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), target, RingWords(1000, {{4, 1000, 5}, {4, 1000, 0x41424344}})), 0u);
  EXPECT_EQ(DumpEntries(log.get()), "1000 4 ABCD -; 1000 4 0x41424344 ABCD");
}

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

TEST(Acquire, TakesAnEmptySlotForId0) {
  const LogPtr log = NewLog();
  // The task that ran until 500 is known, the one switched in is not. No id was stored: File's is 0.
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, {{"File", 1, 2, {{5, 0, 500}}}})), 0u);
  EXPECT_EQ(AppendRing(log.get(), RingWords(500, {{0, 500, 0}, {1, 500, 0}})), 0u);
  EXPECT_EQ(DumpEntries(log.get()), "500 0 - File; 500 1 File -");
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
      {"before", 300, 2000, RingWords(1000, Laps({}, {{4, 200, 1}})), "200 2000 1000000"},
      {"within", 400, 2000, oneRecord, "400 2000 1000000"},
      {"unset", 0, 0, oneRecord, "500 1000 1000000"},
      {"not covering the old entry", 700, 800, oneRecord, "500 1000 1000000"},
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

}  // namespace
