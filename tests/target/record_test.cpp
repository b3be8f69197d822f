// A record's words to type, tick and time, without a log or a target.
#include "target/record.h"

#include <gtest/gtest.h>

namespace {

TEST(Record, SplitsTheTimeWord) {
  const struct {
    u32 word;
    ETLLogType type;
    u32 tick;
  } cases[] = {
      {0x00000000, 0, 0x00000000},  {0x12340007, 4, 0x01230007}, {0xFFF0FFFF, 0, 0x0FFFFFFF},
      {0x000F0000, 15, 0x000000},   {0x00161234, 6, 0x00011234}, {0xFFFFFFFF, 15, 0x0FFFFFFF},
      {0x800E8000, 14, 0x08008000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.word);
    EXPECT_EQ(RecordType(c.word), c.type);
    EXPECT_EQ(RecordTick(c.word), c.tick);
  }
}

TEST(DetectTimeBits, LooksAtTheFirstFourSlots) {
  const struct {
    const char* name;
    u32 slots[10];
    u32 slotCount;
    int timeBits;
  } cases[] = {
      {"no slots", {0x00100000}, 0, 16},
      {"all narrow", {0x000FFFFF, 1, 0x0004FFFF, 2, 0x00020000, 3, 0x00010001, 4, 0x000F0000, 0}, 5, 16},
      {"lowest upper bit in the first", {0x00100000, 1, 0, 2}, 2, 28},
      {"in the fourth", {0, 1, 0, 2, 0, 3, 0x80000000, 4, 0, 5}, 5, 28},
      {"in the fifth only", {0, 1, 0, 2, 0, 3, 0, 4, 0xFFFFFFFF, 5}, 5, 16},
      {"behind a short buffer", {0, 1, 0, 2, 0x00100000, 3}, 2, 16},
      {"in a marker record", {0, 1, 0xFFFFFFFF, 2}, 2, 28},
      {"in an id word", {0, 0xFFFFFFFF, 0, 0xFFFFFFFF}, 2, 16},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(DetectTimeBits(c.slots, c.slotCount), c.timeBits) << c.name;
  }
}

TEST(ExtendTick, FollowsTheRecordReadBefore) {
  const struct {
    const char* name;
    u64 previous;
    u32 tick;
    int timeBits;
    bool forward;
    u64 expected;
  } cases[] = {
      {"forward", 0x50000010, 0x20, 28, true, 0x50000020},
      {"forward wrap", 0x0FFFFFF0, 0x10, 28, true, 0x10000010},
      {"backward", 0x50000020, 0x10, 28, false, 0x50000010},
      {"backward wrap", 0x10000010, 0x0FFFFFF0, 28, false, 0x0FFFFFF0},
      {"16 bits, forward", 0x12345, 0x0100, 16, true, 0x20100},
      {"16 bits, backward", 0x20100, 0x2345, 16, false, 0x12345},
      {"equal, forward", 0x12345678, 0x02345678, 28, true, 0x12345678},
      {"equal, backward", 0x12345678, 0x02345678, 28, false, 0x12345678},
      {"one before, forward", 0x12345678, 0x02345677, 28, true, 0x22345677},
      {"one behind, backward", 0x12345678, 0x02345679, 28, false, 0x02345679},
      {"beyond 32 bits", 0xABCD0FFFFFF0, 0x10, 28, true, 0xABCD10000010},
      {"backward below 0", 0x10, 0x0FFFFFFF, 28, false, 0xFFFFFFFFFFFFFFFF},
      {"16 bits, backward below 0", 5, 6, 16, false, 0xFFFFFFFFFFFF0006},
      {"forward beyond the largest", 0xFFFFFFFFFFFFFFFF, 0, 28, true, 0},
      {"upper tick bits in a narrow buffer", 0x00010000, 0x0ABC0001, 16, true, 0x0ABD0001},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ExtendTick(c.previous, c.tick, c.timeBits, c.forward), c.expected) << c.name;
  }
}

}  // namespace
