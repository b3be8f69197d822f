#include "damagedfile.h"

#include <gtest/gtest.h>

#include <tasklog/tasklog.hpp>

#include "memoryfile.h"
#include "taskfile/repair.h"

namespace {

template <class Integer>
Integer Take(const Bytes& bytes, std::size_t& at) {
  Integer value = 0;
  for (std::size_t i = 0; i < sizeof value; ++i)
    value = static_cast<Integer>(value | static_cast<Integer>(bytes.at(at++)) << 8 * i);
  return value;
}

std::string TakeText(const Bytes& bytes, std::size_t& at) {
  const std::size_t size = Take<std::uint32_t>(bytes, at);
  const std::string text(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                         bytes.begin() + static_cast<std::ptrdiff_t>(at + size));
  at += size;
  return text.c_str();
}

std::string_view View(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool Repair(const Bytes& damaged, Bytes& repaired) {
  const taskfile::Progress none = [](double) {};
  try {
    const taskfile::Salvage salvage = taskfile::Save(View(damaged), none);
    taskfile::WriteSaved(View(damaged), salvage, none, [&](std::string_view part) {
      repaired.insert(repaired.end(), part.begin(), part.end());
    });
    return true;
  } catch (const taskfile::NothingLeft&) {
    return false;
  }
}

void RequireReadable(const Bytes& repaired) {
  const auto fault = taskfile::Check(View(repaired), [](double) {}).fault;
  ASSERT_FALSE(fault) << fault->offset << ": " << fault->field << ": " << fault->found << ", expected "
                      << fault->expected;
  const fuzz::MemoryFile file(repaired);
  EXPECT_TRUE(tasklog::Log().AppendFromFile(file.Path()));
}

}  // namespace

PlacedFile::PlacedFile(const Bytes& file) {
  std::size_t at = 10;
  const auto base = Take<std::uint16_t>(file, at);
  const auto version = std::max(base, Take<std::uint16_t>(file, at));
  const auto start = Take<std::uint64_t>(file, at);
  const auto stop = Take<std::uint64_t>(file, at);
  at += 8;
  const auto tasks = Take<std::uint32_t>(file, at);
  const std::uint32_t eventSections = (version > 0x0100 ? 1u : 0u) + (version > 0x0102 ? 1u : 0u);
  for (std::uint32_t number = 0; number < tasks + eventSections; ++number) {
    const std::size_t begin = at;
    const std::string name = TakeText(file, at);
    at += 8;
    const auto count = Take<std::uint32_t>(file, at);
    sections.push_back({begin, at});
    for (std::uint32_t i = 0; i < count; ++i) {
      PlacedRecord record{at, 0, number, false, {}};
      const unsigned ko = Take<std::uint32_t>(file, at) & 0xFF;
      const bool isNamed = (ko == 7 && version > 0x0101) || (ko == 8 && version > 0x0102);
      const auto id = Take<std::uint32_t>(file, at);
      const auto time = Take<std::uint64_t>(file, at);
      record.content = {number < tasks ? name : "", ko, id, time, isNamed ? TakeText(file, at) : ""};
      record.end = at;
      const bool isMeant = number < tasks ? ko < 7 : ko == 7 + (number - tasks);
      const bool isDropped = i == 0 ? time == start && ko > 2 && ko < 7 : i + 1 == count && time == stop;
      record.isRead = isMeant && !isDropped;
      records.push_back(record);
    }
  }
}

void Sound::CheckRepaired(const Bytes& damaged, Counts& counts) const {
  ++counts.files;
  const auto isDamaged = [&](std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i)
      if (i >= damaged.size() || damaged[i] != file_[i]) return true;
    return false;
  };
  std::vector<bool> isWhole;  // by section
  bool namesAreWhole = true;
  for (const PlacedSection& section : placed_.sections) {
    const std::size_t number = isWhole.size();
    const bool isLast = number + 1 == placed_.sections.size();
    isWhole.push_back(!isDamaged(section.begin, isLast ? file_.size() : placed_.sections[number + 1].begin));
    namesAreWhole &= !isDamaged(section.begin, std::min(section.end - 12, damaged.size()));
  }

  Bytes repaired;
  if (!Repair(damaged, repaired)) {
    ++counts.nothingLeft;
    for (const PlacedRecord& record : placed_.records)
      EXPECT_TRUE(!record.isRead || !isWhole[record.section] || isDamaged(record.begin, record.end));
    return;
  }
  RequireReadable(repaired);
  if (testing::Test::HasFatalFailure()) return;

  std::map<PlacedRecord::Content, int> left;
  const auto key = [&](PlacedRecord::Content content) {
    if (!namesAreWhole) std::get<0>(content).clear();
    return content;
  };
  const PlacedFile result(repaired);
  for (const PlacedRecord& record : result.records)
    if (record.isRead) ++left[key(record.content)];
  for (const PlacedRecord& record : placed_.records) {
    if (!record.isRead) continue;
    const auto known = left.find(key(record.content));
    const bool isKept = known != left.end() && known->second > 0;
    if (isKept) --known->second;
    if (isDamaged(record.begin, record.end)) continue;
    if (isWhole[record.section]) {
      ++counts.wholeRecords;
      EXPECT_TRUE(isKept) << "the record at " << record.begin << " is lost";
    } else {
      ++counts.otherRecords;
      counts.otherKept += isKept ? 1 : 0;
    }
  }
  // What else is there must stand in the file, in bytes that are damaged.
  for (const PlacedRecord& record : result.records) {
    const auto known = left.find(key(record.content));
    if (!record.isRead || known->second == 0) continue;
    --known->second;
    ++counts.damagedKept;
    const auto at = [](const Bytes& bytes, std::size_t offset) {
      return bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    };
    bool isThere = false;
    for (auto from = damaged.begin(); !isThere; ++from) {
      from = std::search(from, damaged.end(), at(repaired, record.begin), at(repaired, record.end));
      if (from == damaged.end()) break;
      const auto place = static_cast<std::size_t>(from - damaged.begin());
      isThere = isDamaged(place, place + record.end - record.begin);
    }
    // A prolog that is whole reads as an entry where the period is lost.
    if (!isThere && isDamaged(14, 30)) {
      ++counts.prologsRead;
      continue;
    }
    EXPECT_TRUE(isThere) << "the record at " << record.begin << " of the result is invented";
  }
}
