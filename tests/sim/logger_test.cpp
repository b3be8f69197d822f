// Start, trigger and freeze of a logger.
#include "logger.h"

#include <gtest/gtest.h>

#include "ringreader.h"

namespace sim {
namespace {

using simtest::RingReader;
using simtest::RingRecord;
using Records = std::vector<RingRecord>;

Records RecordsOf(const Logger& logger) { return RingReader(logger.Words()).Records(); }

TEST(Logger, RecordsOnlyOnceStarted) {
  Logger logger(8, 28);
  logger.Record(2'000'000, recordFromIdle, 7);
  EXPECT_EQ(RecordsOf(logger), Records{});
  logger.Start(3'000'000, 5, std::nullopt);
  logger.Record(3'000'010, recordFromIdle, 7);
  EXPECT_EQ(RecordsOf(logger), (Records{{3'000'000, recordPlainSwitch, 5}, {3'000'010, recordFromIdle, 7}}));
}

// The trigger is the first real switch to the task: neither the record of the start nor an event counts.
TEST(Logger, FreezesHalfABufferAfterTheTrigger) {
  Logger logger(8, 28);
  logger.Start(2'000'000, 7, 7);
  logger.Record(2'000'001, recordTaskEvent, 7);
  logger.Record(2'000'002, recordCycleDone, 5);
  logger.Record(2'000'003, recordPreempted, 7);
  for (uint32_t i = 4; i <= 6; ++i) logger.Record(2'000'000 + i, recordFromIdle, 7);
  EXPECT_TRUE(logger.Recording());
  logger.Record(2'000'007, recordFromIdle, 8);
  EXPECT_FALSE(logger.Recording());
  logger.Record(2'000'008, recordFromIdle, 9);
  const Records frozen = RecordsOf(logger);
  ASSERT_EQ(frozen.size(), 7u);
  EXPECT_EQ(frozen.front(), (RingRecord{2'000'001, recordTaskEvent, 7}));
  EXPECT_EQ(frozen.back(), (RingRecord{2'000'007, recordFromIdle, 8}));
}

TEST(Logger, IsRearmedByAnotherStart) {
  Logger logger(4, 28);
  logger.Start(2'000'000, 1, 7);
  for (uint32_t i = 1; i <= 3; ++i) logger.Record(2'000'000 + i, recordFromIdle, 7);
  ASSERT_FALSE(logger.Recording());
  logger.Start(5'000'000, 1, 7);
  EXPECT_TRUE(logger.Recording());
  EXPECT_EQ(RecordsOf(logger), (Records{{5'000'000, recordPlainSwitch, 1}}));
}

TEST(Logger, RepeatsTheRunningTaskWhereNothingHappensForASpan) {
  Logger logger(16, 16);
  logger.Start(100'000, 1, std::nullopt);
  logger.Record(100'010, recordFromIdle, 2);
  logger.Record(100'010 + 65'535, recordTestpoint, 9);  // just near enough
  logger.Record(165'545 + 65'536, recordTestpoint, 9);  // just too far
  logger.Record(300'000, recordCycleDone, 1);
  EXPECT_EQ(RecordsOf(logger), (Records{{100'000, recordPlainSwitch, 1},
                                        {100'010, recordFromIdle, 2},
                                        {165'545, recordTestpoint, 9},
                                        {231'080, recordTaskEvent, 2},
                                        {231'081, recordTestpoint, 9},
                                        {296'616, recordTaskEvent, 2},
                                        {300'000, recordCycleDone, 1}}));
}

}  // namespace
}  // namespace sim
