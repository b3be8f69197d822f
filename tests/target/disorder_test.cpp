// Buffers whose times do not rise: only where they pass the end of the 64-bit range.
#include <gtest/gtest.h>

#include "support/logs.h"

namespace {

// Reads a buffer twice; the second reading must find everything held.
void ExpectRead(const char* name, TLTaskLog log, std::uint64_t referenceTime,
                const std::vector<RingRecord>& slots, const std::string& expected) {
  SCOPED_TRACE(name);
  for (int reading = 1; reading <= 2; ++reading) {
    EXPECT_EQ(AppendRing(log, RingWords(referenceTime, slots)), 0u);
    EXPECT_EQ(DumpEntries(log), expected) << reading;
  }
}

constexpr std::uint64_t nearEnd = UINT64_MAX - 15;  // 18446744073709551600

TEST(Disorder, OfTheCurrentLapIsSorted) {
  const std::vector<RingRecord> slots = {{4, 0x0FFFFFF0, 1}, {4, 0x0FFFFFF8, 2}, {4, 0x10, 3},
                                         {2, 0x10, 1},       {4, 0x10, 3},       {4, 0x20, 2}};
  const LogPtr log = NewLog();
  ExpectRead("forward over the end", log.get(), nearEnd, slots,
             "16 4 Comm -; 16 2 Idle Comm; 32 4 Ctrl Comm; 18446744073709551600 4 Idle Ctrl; "
             "18446744073709551608 4 Ctrl Idle");
  EXPECT_EQ(DumpTimes(log.get()), "16 18446744073709551608 1000000");
}

TEST(Disorder, OfThePreviousLapIsSorted) {
  const auto slots =
      Laps({{4, 0x10, 1}},
           {{4, 0x0FFFFFE0, 1}, {2, 0x0FFFFFF0, 1}, {4, 0x0FFFFFF0, 3}, {4, 0x0FFFFFF0, 3}, {4, 0x08, 2}});
  ExpectRead("backward below 0", NewLog().get(), 0x10, slots,
             "8 4 Ctrl -; 16 4 Idle Ctrl; 18446744073709551584 4 Idle Idle; "
             "18446744073709551600 2 Idle Idle; 18446744073709551600 4 Comm Idle");
}

TEST(Disorder, KeepsTheLapsApartAtTheReferenceTime) {
  ExpectRead("both laps at one time", NewLog().get(), nearEnd,
             Laps({{4, 0x0FFFFFF0, 1}, {2, 0x08, 2}}, {{2, 0x0FFFFFE8, 1}, {2, 0x0FFFFFF0, 3}}),
             "8 2 Ctrl -; 18446744073709551592 2 Idle -; 18446744073709551600 2 Comm -; "
             "18446744073709551600 4 Idle -");
}

TEST(Disorder, ReachesBehindAndBetweenWhatIsHeld) {
  ExpectRead("held at 500", NewLogWithEntry().get(), nearEnd,
             Laps({{4, 0x0FFFFFF8, 1}, {2, 400, 3}, {2, 500, 2}, {4, 600, 2}}, {{4, 0x0FFFFFE0, 2}}),
             "400 2 Comm -; 500 4 File -; 500 2 Ctrl File; 600 4 Ctrl File; 18446744073709551584 4 Ctrl "
             "Ctrl; 18446744073709551608 4 Idle Ctrl");
}

}  // namespace
