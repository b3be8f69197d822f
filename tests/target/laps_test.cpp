// What a buffer's records become: laps, markers, tick formats, wraps, equal times, and what is held already.
#include <gtest/gtest.h>

#include "support/logs.h"
#include "target/damagedrings.h"

namespace {

// Reads a buffer into a log, then again: the second reading must find everything held.
void ExpectDecoded(const char* name, std::uint64_t referenceTime, const std::vector<RingRecord>& cells,
                   const std::string& expected, const LogPtr& log = NewLog()) {
  for (int reading = 1; reading <= 2; ++reading) {
    EXPECT_EQ(AppendRing(log.get(), RingWords(referenceTime, cells)), 0u);
    EXPECT_EQ(DumpEntries(log.get()), expected) << name << ", reading " << reading;
  }
}

TEST(Laps, AreReadFromTheReferenceTimeBothWays) {
  ExpectDecoded("both laps", 1000, Laps({{4, 1000, 1}, {4, 1010, 2}}, {{4, 980, 1}, {4, 990, 2}}),
                "980 4 Idle -; 990 4 Ctrl Idle; 1000 4 Idle Ctrl; 1010 4 Ctrl Idle");
  ExpectDecoded("no marker", 1000, {{4, 1000, 1}, {4, 990, 2}}, "1000 4 Idle -; 66526 4 Ctrl Idle");
  ExpectDecoded("second marker", 1000, {{4, 1000, 1}, marker, {4, 900, 3}, marker, {4, 990, 2}},
                "990 4 Ctrl -; 1000 4 Idle Ctrl");
  ExpectDecoded("markers only", 1000, {marker, marker, marker}, "");
  ExpectDecoded("28 bits, forward wrap", 0x0FFFFFF0,
                Laps({{4, 0x0FFFFFF8, 1}, {4, 0x10, 2}}, {{4, 0x0FFFFFE0, 1}, {4, 0x0FFFFFE8, 3}}),
                "268435424 4 Idle -; 268435432 4 Comm Idle; 268435448 4 Idle Comm; 268435472 4 Ctrl Idle");
  ExpectDecoded("16 bits, both wraps", 0x12345,
                Laps({{4, 0x2345, 1}, {4, 0x0100, 2}}, {{4, 0xFF00, 3}, {4, 0x2340, 1}}),
                "65280 4 Comm -; 74560 4 Idle Comm; 74565 4 Idle Idle; 131328 4 Ctrl Idle");
  ExpectDecoded("28 bits by a marker of ones", 0x12345678, {{15, 0x0FFFFFFF, 0xFFFFFFFF}, {4, 0x10, 1}},
                "268435472 4 Idle -");
  ExpectDecoded("28 bits by the fourth cell", 0,
                {{2, 1, 1}, {2, 2, 1}, {2, 3, 1}, {2, 0x10004, 1}, {2, 2, 1}},
                "1 2 Idle -; 2 2 Idle -; 3 2 Idle -; 65540 2 Idle -; 268435458 2 Idle -");
  ExpectDecoded("16 bits, whatever the fifth says", 0,
                {{2, 1, 1}, {2, 2, 1}, {2, 3, 1}, {2, 4, 1}, {2, 0x10005, 1}, {2, 2, 1}},
                "1 2 Idle -; 2 2 Idle -; 3 2 Idle -; 4 2 Idle -; 65541 2 Idle -; 131074 2 Idle -");
  ExpectDecoded("high reference word first", 0xABCD00000010, {{4, 0x20, 1}}, "188896956645408 4 Idle -");
}

TEST(Laps, KeepTheBuffersOrderAtEqualTimesAndEqualRecordsOnce) {
  ExpectDecoded("previous lap first", 1000, Laps({{2, 1000, 3}, {4, 1000, 1}}, {{2, 1000, 1}, {2, 1000, 2}}),
                "1000 2 Idle -; 1000 2 Ctrl -; 1000 2 Comm -; 1000 4 Idle -");
  ExpectDecoded("equal records once", 1000,
                Laps({{4, 1000, 1}, {4, 1000, 1}, {4, 1000, 2}, {0, 1000, 1}}, {{4, 1000, 2}}),
                "1000 4 Idle -; 1000 4 Ctrl Idle; 1000 0 Idle Ctrl");
  ExpectDecoded("codes that are not printable", 1000, {{7, 1030, 3}, {7, 1030, 0x80000003}, {7, 1030, 3}},
                "1030 7 0x00000003 -; 1030 7 0x80000003 -");
}

TEST(Laps, MakeEntriesOfEveryType) {
  const std::vector<RingRecord> records = {
      {0, 1000, 1}, {1, 1001, 2},      {2, 1002, 3},          {3, 1003, 1}, {4, 1004, 2},
      {5, 1005, 3}, {6, 1006, 0x9004}, {7, 1007, 0x53544B4F}, {8, 1008, 1}, {14, 1009, 2}};
  ExpectDecoded("types 0 to 14", 1000, records,
                "1000 0 Idle -; 1001 1 Ctrl Idle; 1002 2 Comm Ctrl; 1003 3 Idle Ctrl; 1004 4 Ctrl Idle; "
                "1005 5 Comm Ctrl; 1006 6 TP2 Comm; 1007 7 STKO Comm; 1008 8 Idle Comm; 1009 14 Ctrl Comm");
}

// Where times pass an end of the 64-bit range, they do not rise.
TEST(Laps, AreSortedWhereTimesWrap) {
  constexpr std::uint64_t nearEnd = UINT64_MAX - 15;  // 18446744073709551600
  ExpectDecoded(
      "forward over the end", nearEnd,
      {{4, 0x0FFFFFF0, 1}, {4, 0x0FFFFFF8, 2}, {4, 0x10, 3}, {2, 0x10, 1}, {4, 0x10, 3}, {4, 0x20, 2}},
      "16 4 Comm -; 16 2 Idle Comm; 32 4 Ctrl Comm; 18446744073709551600 4 Idle Ctrl; "
      "18446744073709551608 4 Ctrl Idle");
  ExpectDecoded(
      "backward below 0", 0x10,
      Laps({{4, 0x10, 1}}, {{4, 0x0FFFFFE0, 1}, {2, 0x0FFFFFF0, 1}, {4, 0x0FFFFFF0, 3}, {4, 0x08, 2}}),
      "8 4 Ctrl -; 16 4 Idle Ctrl; 18446744073709551584 4 Idle Idle; "
      "18446744073709551600 2 Idle Idle; 18446744073709551600 4 Comm Idle");
  ExpectDecoded("both laps at one time", nearEnd,
                Laps({{4, 0x0FFFFFF0, 1}, {2, 0x08, 2}}, {{2, 0x0FFFFFE8, 1}, {2, 0x0FFFFFF0, 3}}),
                "8 2 Ctrl -; 18446744073709551592 2 Idle -; 18446744073709551600 2 Comm -; "
                "18446744073709551600 4 Idle -");
  ExpectDecoded("among held entries", nearEnd,
                Laps({{4, 0x0FFFFFF8, 1}, {2, 400, 3}, {2, 500, 2}, {4, 600, 2}}, {{4, 0x0FFFFFE0, 2}}),
                "400 2 Comm -; 500 4 File -; 500 2 Ctrl File; 600 4 Ctrl File; 18446744073709551584 4 Ctrl "
                "Ctrl; 18446744073709551608 4 Idle Ctrl",
                NewLogWithEntry());
}

TEST(Laps, AreSortedWhereNarrowTicksUseUpperBits) {
  ExpectDecoded("among records of the previous lap", damagedReferenceTime, RisesInPreviousLap(),
                "851969 2 Idle -; 851973 2 Idle -; 852000 2 Comm -; 852000 2 Ctrl -; 852000 2 Idle -; "
                "917520 2 Ctrl -; 917520 2 Idle -");
  ExpectDecoded("among records of the current lap", damagedReferenceTime, RisesIntoCurrentLap(),
                "524304 2 Idle -; 524320 2 Comm -; 524320 2 Idle -; 524320 2 Ctrl -; 524336 2 Idle -; "
                "917568 2 Comm -; 917568 2 Idle -; 917568 2 Ctrl -");
  ExpectDecoded("equal cells at two times", 0x10,
                Laps({}, {{2, 1, 1}, {2, 1, 2}, {2, 1, 3}, {2, 0x20005, 1}, {2, 0x20005, 1}}),
                "65541 2 Idle -; 131073 2 Idle -; 131073 2 Ctrl -; 131073 2 Comm -; 131077 2 Idle -");
}

}  // namespace
