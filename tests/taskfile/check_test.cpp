// Each kind of fault, in a sound file of which a few bytes are changed: where it is named, and how.
#include "taskfile/check.h"

#include <gtest/gtest.h>

#include "support/taskfile.h"

namespace {

const struct {
  std::size_t at;
  Bytes bytes;
  std::uint64_t offset;
  const char* field;
  const char* found;
  const char* expected;
} faults[] = {
    {0, {'X'}, 0, "magic", "'XaskLogger'", "'TaskLogger'"},
    {10, {4}, 10, "base version", "0x0104", "at most 0x0103; a newer program may know it"},
    {34, {0}, 34, "tick rate divisor", "0", "1"},
    {22, {0x89}, 22, "stop time", "5001", "5000, at which the sections end"},
    {14, {0}, 14, "start time", "768", "1000, at which the sections begin"},
    {42, {1, 1}, 42, "header of section 1, length of the name", "257", "at most 256"},
    {59, {9}, 143, "record 6 of 9 in section 1 ('Idle'), Ko type", "0x04FF", "0 to 6"},
    {79, {9}, 79, "record 2 of 4 in section 1 ('Idle'), Ko type", "9", "0 to 6"},
    {94,
     {1},
     87,
     "record 2 of 4 in section 1 ('Idle'), time",
     "72057594037929936",
     "in order with those beside it, or between 1000 and 5000"},
    {95, Bytes(16), 95, "record 3 of 4 in section 1 ('Idle')", "zeros alone", "a record"},
    {216, {'X'}, 216, "header of section 3, name", "'Xtamps'", "'Stamps'"},
    {251, {8}, 251, "record 2 of 2 in section 3 ('Stamps'), Ko type", "8", "7"},
    {298, {0}, 298, "behind the last section", "1 bytes", "the end of the file"},
};

TEST(Check, NamesTheFirstFault) {
  for (const auto& fault : faults) {
    SCOPED_TRACE(fault.field);
    Bytes file = ReadHex("golden/example.hex");
    file.resize(std::max(file.size(), fault.at + fault.bytes.size()));
    std::copy(fault.bytes.begin(), fault.bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(fault.at));
    const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
    const auto found = taskfile::Check(bytes, [](double) {}).fault;
    ASSERT_TRUE(found);
    EXPECT_EQ(found->offset, fault.offset);
    EXPECT_EQ(found->field, fault.field);
    EXPECT_EQ(found->found, fault.found);
    EXPECT_EQ(found->expected, fault.expected);
  }
}

// A log may have records outside its period, and of two that are the wrong way round nobody knows which is
// right.
TEST(Check, TakesWhatAWriterMayHaveWritten) {
  const FileHeader header{.startTime = 1000, .stopTime = 5000};
  const std::vector<FileRecord> records[] = {
      {{3, 0, 1000}, {2, 1, 500}, {5, 2, 1500}, {2, 1, 9000}, {3, 0, 5000}},
      {{3, 0, 1000}, {2, 1, 1700}, {5, 2, 1500}, {2, 1, 1600}, {3, 0, 5000}},
      {{2, 1, 2000}},
  };
  for (const auto& section : records) {
    const Bytes file = TaskFile(header, {{"T", 1, 0, section}});
    const std::string_view bytes(reinterpret_cast<const char*>(file.data()), file.size());
    EXPECT_FALSE(taskfile::Check(bytes, [](double) {}).fault);
  }
}

}  // namespace
