// Whole files into logs: versions, strings, appends over what a log holds.
#include <gtest/gtest.h>

#include "support/allocations.h"
#include "support/logs.h"
#include "validfile.h"

namespace {

TEST(Reader, ReadsTheExample) {
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), ReadHex("golden/example.hex")), 0u);
  EXPECT_EQ(DumpTimes(log.get()), "1000 5000 1000000");
  EXPECT_EQ(DumpCategories(log.get()), "task Idle 0 10 id 1; task Ctrl 5 -1 id 2; testpoint TP1 id 9");
  EXPECT_EQ(DumpEntries(log.get()), "1000 4 Idle -; 2000 0 Ctrl Idle; 3000 6 TP1 Ctrl; 4000 0 Idle Ctrl");
}

TEST(Reader, ReadsEveryVersion) {
  const std::string tasks = "task Idle 0 10 id 0; task Ctrl 5 -1 id 0";
  const std::string issue = "issue OVRN id 1331057230";
  const struct {
    std::uint16_t base, file;
    std::uint32_t effective;
    std::string categories;
  } cases[] = {
      {0x0100, 0x0100, 0x0100, tasks},
      {0x0000, 0x0001, 0x0001, tasks},
      {0x0101, 0x0000, 0x0101, tasks + "; testpoint  id 9"},
      {0x0100, 0x0102, 0x0102, tasks + "; testpoint TP1 id 9"},
      {0x0103, 0x0100, 0x0103, tasks + "; testpoint TP1 id 9; " + issue},
      {0x0103, 0x0104, 0x0104, "task Idle 0 10 id 1; task Ctrl 5 -1 id 2; testpoint TP1 id 9; " + issue},
      {0x0000, 0xFFFF, 0xFFFF, "task Idle 0 10 id 1; task Ctrl 5 -1 id 2; testpoint TP1 id 9; " + issue},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.base << ' ' << c.file);
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendBytes(log.get(), ValidFile(c.base, c.file)), 0u);
    EXPECT_EQ(DumpEntries(log.get()), EntriesOfValidFile(c.effective));
    EXPECT_EQ(DumpCategories(log.get()), c.categories);
    EXPECT_EQ(DumpTimes(log.get()), "1000 5000 1000000");
  }
}

TEST(Reader, ReadsStringsUpToTheirFirstNul) {
  const std::string longest(255, 'n');
  const struct {
    std::uint32_t length;
    std::string bytes;
    std::optional<std::string> name;  // none: the file is invalid
  } cases[] = {
      {0, "", ""},
      {1, std::string(1, '\0'), ""},
      {5, std::string("Idle\0", 5), "Idle"},
      {4, "Idle", "Idle"},
      {7, std::string("Id\0le\0x", 7), "Id"},
      {256, longest + '\0', longest},
      {256, longest + 'n', longest},
      {257, longest + std::string(2, '\0'), {}},
      {0xFFFFFFFF, longest, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.length << " " << c.bytes);
    ByteWriter writer;
    writer.Header({.baseVersion = 0x0100, .fileVersion = 0x0100}, 1).U32(c.length).Raw(c.bytes);
    writer.U32(3).U32(0x80000000).U32(0);
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendBytes(log.get(), writer.Result()), c.name ? TL_OK : TLErrFileInvalid);
    EXPECT_EQ(DumpCategories(log.get()), c.name ? "task " + *c.name + " 3 -2147483648 id 0" : "");
  }
}

TEST(Reader, MergesBehindOldEntriesOfTheSameTimeAndRefillsTheWholeLog) {
  const LogPtr log = NewLog();
  const auto words = RingWords(1000, {{4, 1000, 1}, {6, 1010, 0x9000}, {8, 1015, 2}, {4, 1020, 2}});
  EXPECT_EQ(AppendRing(log.get(), words), 0u);
  const FileSection task{"File", 1, 2, {{2, 0, 1005}, {0, 0, 1010}, {2, 0, 1000}, {0, 0, 4000}}};
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({.startTime = 2000, .stopTime = 3000, .tickRate = 7}, {task})),
            0u);
  // The testpoint's task was Idle. Those of the types 8 and 4 stay as the append from the target left them.
  EXPECT_EQ(DumpEntries(log.get()),
            "1000 4 Idle -; 1000 4 File Idle; 1005 4 File File; 1010 6 TP1 File; 1010 2 File File; "
            "1015 8 Ctrl Idle; 1020 4 Ctrl Idle; 4000 2 File Ctrl");
  EXPECT_EQ(DumpTimes(log.get()), "2000 3000 7");
}

// A file that asks for much makes nothing large be allocated.
TEST(Reader, RefusesByFault) {
  const struct {
    const char* name;
    std::uint32_t status;
    const char* times;
  } cases[] = {
      {"invalid/empty", TLErrFileInvalid, "400 600 50"},
      {"invalid/wrong_marker", TLErrFileInvalid, "400 600 50"},
      {"invalid/newer_base_version", TLErrFileVersion, "400 600 50"},
      {"invalid/divisor_0", TLErrFileInvalid, "1000 5000 50"},
      {"invalid/no_stamps_section", TLErrFileInvalid, "1000 5000 1000000"},
      {"invalid/no_events_section", TLErrFileInvalid, "1000 5000 1000000"},
      {"invalid/huge_name_length", TLErrFileInvalid, "1000 5000 1000000"},
      {"invalid/huge_record_count", TLErrFileInvalid, "1000 5000 1000000"},
      {"invalid/huge_section_count", TLErrFileInvalid, "1000 5000 1000000"},
      {"valid/no_sections", 0, "1000 5000 1000000"},
      {"valid/trailing_bytes", 0, "1000 5000 1000000"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const LogPtr log = NewLogWithEntry();
    const TempFile file(ReadHex("data/" + std::string(c.name) + ".hex"));
    std::uint32_t status = 0;
    std::size_t largestBytes = 0;
    {
      const AllocationWatch watch;
      status = TLTaskLogAppendFromFile(log.get(), file.CPath());
      largestBytes = watch.LargestBytes();
    }
    EXPECT_EQ(status, c.status);
    EXPECT_EQ(DumpTimes(log.get()), c.times);
    EXPECT_EQ(DumpEntries(log.get()), "500 4 File -");
    EXPECT_LT(largestBytes, std::size_t{1} << 20);
  }
}

}  // namespace
