// Files whose records are many of one time, close together, far apart, or of many categories.
#include <gtest/gtest.h>

#include "support/logs.h"

namespace {

constexpr std::uint32_t many = 5000;  // more than are brought into order at once

std::vector<FileRecord> Repeated(std::uint32_t count, FileRecord record) {
  return std::vector<FileRecord>(count, record);
}

TEST(ManyRecords, OfOneTimeArePairedInTheOrderOfTheFile) {
  // The first entries take both sides, the rest of A's stay without one.
  std::vector<FileRecord> ofA = Repeated(many, {2, 0, 2000});
  ofA.push_back({2, 0, 3000});
  const FileSection b{"B", 0, 0, Repeated(many - 100, {5, 0, 2000})};
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, {{"A", 0, 0, ofA}, b})), 0u);
  const TLCategory taskA = CategoryNamed(log.get(), "A");
  const TLCategory taskB = CategoryNamed(log.get(), "B");
  EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), nullptr, 0, 0, UINT64_MAX), many + 1);
  EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), nullptr, 1 << TLLogSwitch0, 0, UINT64_MAX), many - 100);
  EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), taskB, 0, 0, UINT64_MAX), many - 100);
  EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), taskA, 1 << TLLogSwitch4, 0, UINT64_MAX), 101u);
  const std::string dump = DumpEntries(log.get());
  EXPECT_TRUE(dump.starts_with("2000 0 A B; 2000 0 A B")) << dump.substr(0, 100);
  EXPECT_TRUE(dump.ends_with("2000 4 A A; 3000 4 A A")) << dump.substr(dump.size() - 100);
}

TEST(ManyRecords, OfNeighbouringTimesAreSorted) {
  std::vector<FileRecord> even, odd;
  std::string expected;
  for (std::uint32_t i = 0; i < many; ++i) {
    even.push_back({2, 0, 2000 + 2 * i});
    odd.push_back({2, 0, 2001 + 2 * i});
    expected += std::to_string(2000 + 2 * i) + " 4 Even " + (i == 0 ? "-; " : "Odd; ") +
                std::to_string(2001 + 2 * i) + " 4 Odd Even; ";
  }
  const LogPtr log = NewLog();
  const FileHeader header{.startTime = 1000, .stopTime = 99999};
  EXPECT_EQ(AppendBytes(log.get(), TaskFile(header, {{"Odd", 0, 0, odd}, {"Even", 0, 0, even}})), 0u);
  EXPECT_EQ(DumpEntries(log.get()) + "; ", expected);
}

// What comes next is looked for in a stretch of time that is narrowed and widened as it fills.
TEST(ManyRecords, OfTwoNeighbouringTimesBehindAFewFarApart) {
  for (const std::uint32_t sparse : {1, 2, 3}) {
    std::vector<FileRecord> records;
    for (std::uint32_t i = 0; i < sparse; ++i) records.push_back({2, 0, 2000 + (i << 19)});
    for (const std::uint64_t time : {1ull << 30, (1ull << 30) + 1})
      records.insert(records.end(), many / 2, {2, 0, time});
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, {{"A", 0, 0, records}})), 0u);
    EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), nullptr, 0, 0, UINT64_MAX), sparse + many);
  }
}

// Times all over the 64-bit range, the last ones at its end.
TEST(ManyRecords, FarApartAreSorted) {
  std::vector<FileRecord> records;
  std::string expected;
  for (std::uint64_t i = 1; i <= 127; ++i) {
    records.push_back({0, 0, i << 57});
    records.push_back({0, 0, (i << 57) + 1});
    records.push_back({0, 0, (i << 57) + (1 << 22)});  // just behind what is brought into order at once
    for (const std::uint64_t offset : {0, 1, 1 << 22})
      expected += std::to_string((i << 57) + offset) + " 2 T -; ";
  }
  records.push_back({0, 0, UINT64_MAX});
  expected += std::to_string(UINT64_MAX) + " 2 T -; ";
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, {{"T", 0, 0, records}})), 0u);
  EXPECT_EQ(DumpEntries(log.get()) + "; ", expected);
}

TEST(ManyRecords, OfManyCategoriesFindTheirOwn) {
  constexpr std::uint32_t kinds = 400;
  std::vector<std::string> names;
  for (std::uint32_t i = 0; i < kinds; ++i) names.push_back("n" + std::to_string(i / 2));  // each has two ids
  std::vector<FileRecord> stamps, events;
  std::string expected;
  for (std::uint32_t i = 0; i < 2 * kinds; ++i) {
    const std::string& name = names[i % kinds];
    stamps.push_back({7, i % 2, 2000 + i, name.c_str()});
    events.push_back({8, 0, 2000 + i, name.c_str()});
    const std::string at = std::to_string(2000 + i);
    expected += at + " 6 " + name + " -; " + at + " 7 " + name + " -; ";
  }
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, {}, stamps, events)), 0u);
  EXPECT_EQ(DumpEntries(log.get()) + "; ", expected);
  EXPECT_EQ(TLTaskLogGetCategoriesCount(log.get(), 0, nullptr), kinds + kinds / 2);
}

}  // namespace
