// The encoder of logger buffers, word by word.
#include "ring.h"

#include <gtest/gtest.h>

namespace sim {
namespace {

using Words = std::vector<uint32_t>;

constexpr uint32_t ones = 0xFFFFFFFF;

// The example of docs/ring-buffer.md.
TEST(Ring, WritesTheDocumentedExample) {
  Ring ring(5, 28);
  ring.Clear(0x123456789);
  ring.Write(0x123456790, 3, 0x00010001);
  ring.Write(0x1234567A0, 6, 0x00FF0000);
  ring.Write(0x1234F0005, 1, 0x00010002);
  ring.Write(0x1234F0100, 3, 0x00010001);
  ring.Write(0x123500000, 7, 0x4F56524E);
  ring.Write(0x12F000010, 1, 0x00010002);
  ring.Write(0x130000004, 3, 0x00010001);
  EXPECT_EQ(ring.Words(), (Words{0x00000001, 0x23500000, 0xF0010010, 0x00010002, 0x00030004, 0x00010001, ones,
                                 ones, 0x34F30100, 0x00010001, 0x35070000, 0x4F56524E}));
}

// Four records in the first 2^16 ticks of a span would pass for 16-bit ticks once the marker has gone on.
TEST(Ring, TurnsBackWhereWideTicksWouldLookNarrow) {
  Ring ring(6, 28);
  ring.Clear(0x4FFFFFFF);
  for (uint32_t i = 1; i <= 3; ++i) ring.Write(0x50000000 + i, 4, i);
  EXPECT_EQ(ring.Words(), (Words{0, 0x4FFFFFFF, 0x00040001, 1, 0x00040002, 2, 0x00040003, 3,  //
                                 ones, ones, ones, ones, ones, ones}));
  ring.Write(0x50000004, 4, 4);
  EXPECT_EQ(ring.Words(), (Words{0, 0x50000004, ones, ones, ones, ones, 0x00040001, 1, 0x00040002, 2,  //
                                 0x00040003, 3, 0x00040004, 4}));
  // One wide tick among the first four is enough to stay.
  Ring steady(6, 28);
  steady.Clear(0x4FFF0000);
  for (uint32_t i = 1; i <= 4; ++i) steady.Write(0x4FFFFFFE + i, 4, i);
  EXPECT_EQ(steady.Words()[1], 0x4FFF0000);
}

}  // namespace
}  // namespace sim
