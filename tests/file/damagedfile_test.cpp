// Files that are cut short, wrong or absurd, and memory that runs out: the entries stay, and nothing large is
// allocated.
#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>

#include "support/allocations.h"
#include "support/logs.h"
#include "validfile.h"

namespace {

// More than any allocation for these files needs, less than the files ask for.
constexpr std::size_t smallBytes = 1 << 20;

constexpr char entriesBefore[] = "500 4 File -";  // of NewLogWithEntry()

std::string EntriesAfter(std::uint32_t effectiveVersion) {
  return "500 4 File -; " + EntriesOfValidFile(effectiveVersion);
}

std::size_t OpenFiles() {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

TEST(DamagedFile, IsRefusedAtEveryPrefixOfEveryVersion) {
  const std::size_t openFiles = OpenFiles();
  constexpr std::uint16_t versions[] = {0x0100, 0x0101, 0x0102, 0x0103, 0x0104};
  for (const std::uint16_t version : versions) {
    const Bytes whole = ValidFile(std::min<std::uint16_t>(version, 0x0103), version);
    for (std::size_t size = 0; size < whole.size(); ++size) {
      SCOPED_TRACE(testing::Message() << std::hex << version << std::dec << " cut to " << size);
      const LogPtr log = NewLogWithEntry();
      const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      ASSERT_EQ(AppendBytes(log.get(), cut), TLErrFileInvalid);
      ASSERT_EQ(DumpEntries(log.get()), entriesBefore);
      const std::string times = std::string(size < 22 ? "400" : "1000") + (size < 30 ? " 600" : " 5000") +
                                (size < 38 ? " 50" : " 1000000");
      ASSERT_EQ(DumpTimes(log.get()), times);
      // The header of the first section, "Idle", ends at 63. Its records cannot name Ctrl.
      ASSERT_EQ(CategoryNamed(log.get(), "Idle") != nullptr, size >= 63);
      ASSERT_EQ(AppendBytes(log.get(), whole), 0u);
      ASSERT_EQ(DumpEntries(log.get()), EntriesAfter(version));
    }
  }
  EXPECT_EQ(OpenFiles(), openFiles);
}

TEST(DamagedFile, KeepsIdsAndCategoriesReadBeforeTheDamage) {
  Bytes file = ValidFile(0x0103, 0x0104);
  file.pop_back();
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), file), TLErrFileInvalid);
  EXPECT_EQ(DumpCategories(log.get()), "task Idle 0 10 id 1; task Ctrl 5 -1 id 2; testpoint TP1 id 9");
}

TEST(DamagedFile, IsRefusedByFault) {
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
    EXPECT_EQ(DumpEntries(log.get()), entriesBefore);
    EXPECT_LT(largestBytes, smallBytes);
  }
}

TEST(DamagedFile, IsReadOrRefusedWithAnyByteChanged) {
  constexpr std::uint8_t changes[] = {0x01, 0x80, 0xFF};
  const Bytes whole = ValidFile(0x0103, 0x0104);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const std::uint8_t change : changes) {
      SCOPED_TRACE(testing::Message() << at << " changed by " << int{change});
      Bytes changed = whole;
      changed[at] ^= change;
      const LogPtr log = NewLogWithEntry();
      const std::uint32_t status = AppendBytes(log.get(), changed);
      if (status == 0) {
        ASSERT_GE(CountIn(DumpEntries(log.get())), 2u);
      } else {
        ASSERT_TRUE(status == TLErrFileInvalid || status == TLErrFileVersion) << status;
        ASSERT_EQ(DumpEntries(log.get()), entriesBefore);
      }
    }
  }
}

TEST(DamagedFile, LeavesTheEntriesWhenMemoryRunsOut) {
  const std::size_t openFiles = OpenFiles();
  const TempFile file(ValidFile(0x0103, 0x0104));
  bool failed = true;
  for (std::size_t allocation = 1; failed; ++allocation) {
    SCOPED_TRACE(allocation);
    const LogPtr log = NewLogWithEntry();
    std::uint32_t status = 0;
    {
      const AllocationWatch watch(allocation);
      status = TLTaskLogAppendFromFile(log.get(), file.CPath());
      failed = watch.Failed();
    }
    ASSERT_EQ(status, failed ? TLErrOutOfMemory : TL_OK);
    EXPECT_EQ(DumpEntries(log.get()), failed ? entriesBefore : EntriesAfter(0x0104));
    EXPECT_EQ(DumpTimes(log.get()), "1000 5000 1000000");
    if (!failed) continue;
    EXPECT_EQ(TLTaskLogAppendFromFile(log.get(), file.CPath()), 0u);
    EXPECT_EQ(DumpEntries(log.get()), EntriesAfter(0x0104));
    EXPECT_EQ(TLTaskLogGetCategoriesCount(log.get(), 0, nullptr), 5u);
  }
  EXPECT_EQ(OpenFiles(), openFiles);
}

}  // namespace
