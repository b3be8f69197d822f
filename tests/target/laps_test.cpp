// What a buffer's records become: laps, markers, tick formats, wraps and equal times.
#include <gtest/gtest.h>

#include "support/logs.h"

namespace {

void ExpectDecoded(const char* name, std::uint64_t referenceTime, const std::vector<RingRecord>& slots,
                   const std::string& expected) {
  SCOPED_TRACE(name);
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(referenceTime, slots)), 0u);
  EXPECT_EQ(DumpEntries(log.get()), expected);
}

TEST(Laps, AreReadFromTheReferenceTimeBothWays) {
  ExpectDecoded("both laps", 1000, Laps({{4, 1000, 1}, {4, 1010, 2}}, {{4, 980, 1}, {4, 990, 2}}),
                "980 4 Idle -; 990 4 Ctrl Idle; 1000 4 Idle Ctrl; 1010 4 Ctrl Idle");
  ExpectDecoded("marker first", 1000, Laps({}, {{4, 980, 1}, {2, 990, 2}}), "980 4 Idle -; 990 2 Ctrl Idle");
  ExpectDecoded("marker last", 1000, Laps({{4, 1000, 1}, {2, 1010, 2}}, {}),
                "1000 4 Idle -; 1010 2 Ctrl Idle");
  ExpectDecoded("no marker", 1000, {{4, 1000, 1}, {4, 990, 2}}, "1000 4 Idle -; 66526 4 Ctrl Idle");
  ExpectDecoded("second marker", 1000, {{4, 1000, 1}, marker, {4, 900, 3}, marker, {4, 990, 2}},
                "990 4 Ctrl -; 1000 4 Idle Ctrl");
  ExpectDecoded("markers only", 1000, {marker, marker, marker}, "");
  ExpectDecoded("no slots", 1000, {}, "");
}

TEST(Laps, KeepTheBuffersOrderAtEqualTimes) {
  ExpectDecoded("previous lap first", 1000, Laps({{2, 1000, 3}, {4, 1000, 1}}, {{2, 1000, 1}, {2, 1000, 2}}),
                "1000 2 Idle -; 1000 2 Ctrl -; 1000 2 Comm -; 1000 4 Idle -");
  ExpectDecoded("equal records once", 1000,
                Laps({{4, 1000, 1}, {4, 1000, 1}, {4, 1000, 2}, {0, 1000, 1}}, {{4, 1000, 2}}),
                "1000 4 Idle -; 1000 4 Ctrl Idle; 1000 0 Idle Ctrl");
  ExpectDecoded("equal records of the previous lap once", 1000,
                Laps({}, {{4, 990, 1}, {4, 990, 1}, {2, 990, 1}, {4, 990, 1}, {4, 995, 2}}),
                "990 2 Idle -; 990 4 Idle -; 995 4 Ctrl Idle");
}

TEST(Laps, ExtendTicksFromRecordToRecord) {
  ExpectDecoded("28 bits, forward wrap", 0x0FFFFFF0,
                Laps({{4, 0x0FFFFFF8, 1}, {4, 0x10, 2}}, {{4, 0x0FFFFFE0, 1}, {4, 0x0FFFFFE8, 3}}),
                "268435424 4 Idle -; 268435432 4 Comm Idle; 268435448 4 Idle Comm; 268435472 4 Ctrl Idle");
  ExpectDecoded("28 bits, backward wrap", 0x10000010, Laps({}, {{4, 0x0FFFFFF0, 1}, {4, 0x08, 2}}),
                "268435440 4 Idle -; 268435464 4 Ctrl Idle");
  ExpectDecoded("backward below 0", 0x10, Laps({{4, 0x10, 1}}, {{4, 0x0FFFFFFF, 2}}),
                "16 4 Idle -; 18446744073709551615 4 Ctrl Idle");
  ExpectDecoded("16 bits, both wraps", 0x12345,
                Laps({{4, 0x2345, 1}, {4, 0x0100, 2}}, {{4, 0xFF00, 3}, {4, 0x2340, 1}}),
                "65280 4 Comm -; 74560 4 Idle Comm; 74565 4 Idle Idle; 131328 4 Ctrl Idle");
  ExpectDecoded("each lap from the reference time", 74565,
                Laps({{4, 0x2345, 1}, {4, 0x2900, 2}}, {{4, 0x2800, 3}}),
                "10240 4 Comm -; 74565 4 Idle Comm; 76032 4 Ctrl Idle");
  ExpectDecoded("28 bits by a marker of ones", 0x12345678, {{15, 0x0FFFFFFF, 0xFFFFFFFF}, {4, 0x10, 1}},
                "268435472 4 Idle -");
  ExpectDecoded("high reference word first", 0xABCD00000010, {{4, 0x20, 1}}, "188896956645408 4 Idle -");
}

TEST(Laps, MakeEntriesOfEveryType) {
  ExpectDecoded("types 0 to 14", 1000,
                {{0, 1000, 1},
                 {1, 1001, 2},
                 {2, 1002, 3},
                 {3, 1003, 1},
                 {4, 1004, 2},
                 {5, 1005, 3},
                 {6, 1006, 0x9004},
                 {7, 1007, 0x53544B4F},
                 {8, 1008, 1},
                 {14, 1009, 2}},
                "1000 0 Idle -; 1001 1 Ctrl Idle; 1002 2 Comm Ctrl; 1003 3 Idle Ctrl; 1004 4 Ctrl Idle; "
                "1005 5 Comm Ctrl; 1006 6 TP2 Comm; 1007 7 STKO Comm; 1008 8 Idle Comm; 1009 14 Ctrl Comm");
}

}  // namespace
