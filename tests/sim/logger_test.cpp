// What of a logger no recording shows: the exact trigger, arming again, and where silence is bridged.
#include "logger.h"

#include <gtest/gtest.h>

#include "ringreader.h"

namespace sim {
namespace {

using Records = std::vector<simtest::RingRecord>;

Records RecordsOf(const Logger& logger) { return simtest::RingReader(logger.Words()).Records(); }

// The trigger is the first real switch to the task: neither the record of the start nor an event counts.
TEST(Logger, FreezesHalfABufferAfterTheTriggerEachTimeItIsStarted) {
  Logger logger(8, 28);
  for (int start = 0; start < 2; ++start) {
    logger.Start(2'000'000, 7, 7);
    logger.Record(2'000'001, recordTaskEvent, 7);
    logger.Record(2'000'002, recordCycleDone, 5);
    logger.Record(2'000'003, recordPreempted, 7);
    for (uint32_t i = 4; i <= 6; ++i) logger.Record(2'000'000 + i, recordFromIdle, 7);
    EXPECT_TRUE(logger.Recording());
    logger.Record(2'000'007, recordFromIdle, 8);
    EXPECT_FALSE(logger.Recording());
    logger.Record(2'000'008, recordFromIdle, 9);
    EXPECT_EQ(RecordsOf(logger).back(), (simtest::RingRecord{2'000'007, recordFromIdle, 8}));
  }
}

TEST(Logger, RepeatsTheRunningTaskWhereNothingHappensForASpan) {
  Logger logger(16, 16);
  logger.Start(100'000, 1, std::nullopt);
  logger.Record(100'000 + 65'535, recordTestpoint, 9);  // just near enough
  logger.Record(165'535 + 65'536, recordTestpoint, 9);  // just too far
  EXPECT_EQ(RecordsOf(logger), (Records{{100'000, recordPlainSwitch, 1},
                                        {165'535, recordTestpoint, 9},
                                        {231'070, recordTaskEvent, 1},
                                        {231'071, recordTestpoint, 9}}));
}

}  // namespace
}  // namespace sim
