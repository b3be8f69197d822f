#include "growth/shapes.h"

#include <cstdio>

namespace growth {
namespace {

using bench::Record;
using bench::TaskId;
using bench::TestpointId;

constexpr std::uint64_t now = 0x5000000;
constexpr std::uint32_t unknownId = 0x70000000;

std::string Placeholder(std::uint32_t index) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", unknownId + index);
  return text;
}

std::string LongestName(std::uint32_t index) {
  return std::string(240, 'n') + std::to_string(100000 + index);
}

// In each eight records a task of `tasks` does a job above one that never ends, and four timing issues of
// `codes` kinds are raised.
Record Issues(std::uint32_t i, std::size_t taskCount, std::size_t codeCount) {
  const auto tasks = static_cast<std::uint32_t>(taskCount), codes = static_cast<std::uint32_t>(codeCount);
  const std::uint64_t time = now + (i / 8) * 100 + i % 8 * 10;
  const std::uint32_t task = TaskId(1 + i / 8 % tasks);
  if (i % 8 == 1) return {time, 2, task};
  if (i % 8 == 5) return {time, 0, task};
  if (i % 8 == 6) return {time, 1, TaskId(0)};
  return {time, 7, 0x41414141 + i % codes};
}

constexpr RingShape IssueShape(const char* name, Record (*recordAt)(std::uint32_t i, std::size_t count)) {
  RingShape shape{name, recordAt};
  shape.scale = 8;
  return shape;
}

constexpr RingShape rings[] = {
    {"one time",
     [](auto i, auto) {
       return Record{now, i / 4096, TaskId(i % 4096)};
     }},
    {"two times",
     [](auto i, auto n) {
       return Record{now + (i > n / 2), i / 4096, TaskId(i % 4096)};
     }},
    {"times in turns",
     [](auto i, auto) {
       return Record{now + i % 2, i / 4096, TaskId(i % 4096)};
     }},
    {"a crowd behind a gap",
     [](auto i, auto) {
       return Record{i == 0 ? 1 : now, i / 4096, TaskId(i % 4096)};
     }},
    {"timing issues of one time",
     [](auto i, auto) {
       return Record{now, 7, 0x41414141 + i};
     }},
    {"times backward",
     [](auto i, auto) {
       return Record{now - i, 4, TaskId(i % 8)};
     }},
    {"equal records",
     [](auto, auto) {
       return Record{now, 4, TaskId(0)};
     }},
    {"the end of time",
     [](auto i, auto n) {
       return Record{UINT64_MAX - n / 2 + i, 4, TaskId(i % 8)};
     }},
    {"unknown ids",
     [](auto i, auto) {
       return Record{now + i, 4, unknownId + i};
     }},
    {"unknown testpoints",
     [](auto i, auto) {
       return Record{now + i, 6, unknownId + i};
     }},
    {"tasks named like unknown ids",
     [](auto i, auto) {
       return Record{now + i, 4, unknownId + i};
     },
     true, false, Placeholder, false},
    {"tasks of one name",
     [](auto i, auto) {
       return Record{now + i, 4, TaskId(i)};
     },
     true},
    {"tasks that are one",
     [](auto i, auto) {
       return Record{now + i, 4, TaskId(i)};
     },
     true, false, [](std::uint32_t) { return std::string("same"); }, false},
    {"testpoints of one name",
     [](auto i, auto) {
       return Record{now + i, 6, TestpointId(i)};
     },
     false, true},
    {"longest names",
     [](auto i, auto) {
       return Record{now + i, 4, TaskId(i)};
     },
     true, false, LongestName},
    IssueShape("one timing issue in jobs", [](auto i, auto) { return Issues(i, 1, 1); }),
    IssueShape("timing issues of many kinds in jobs", [](auto i, auto n) { return Issues(i, 1, n / 4); }),
    IssueShape("timing issues of some kinds in jobs of many",
               [](auto i, auto n) { return Issues(i, n / 32, 60); }),
    IssueShape("timing issues of many kinds in jobs of many",
               [](auto i, auto n) { return Issues(i, n / 32, n / 4); }),
};

// One section, whose records take turns between switching in and out.
Bytes Section(std::uint32_t count, std::uint64_t (*timeAt)(std::uint32_t i, std::uint32_t count)) {
  FileSection section{"A"};
  for (std::uint32_t i = 0; i < count; ++i) section.records.push_back({i % 2 ? 2u : 5u, i, timeAt(i, count)});
  return TaskFile({}, {section});
}

// Many sections of a few records each.
Bytes Sections(std::uint32_t count, std::uint32_t records, std::string (*nameOf)(std::uint32_t index)) {
  std::vector<FileSection> sections;
  for (std::uint32_t i = 0; i < count; ++i) {
    sections.push_back({nameOf(i), 1, static_cast<std::int32_t>(i)});
    for (std::uint32_t k = 0; k < records; ++k) sections.back().records.push_back({2, 0, now + i + 1000 * k});
  }
  return TaskFile({}, sections);
}

std::string Same(std::uint32_t) { return "same"; }

constexpr FileShape files[] = {
    {"one time", [](auto n) { return Section(n, [](auto, auto) { return now; }); }},
    {"two times behind a gap",
     [](auto n) { return Section(n, [](auto i, auto c) { return i == 0 ? 1 : now + (i > c / 2); }); }},
    {"times backward", [](auto n) { return Section(n, [](auto i, auto) { return now - i; }); }},
    {"both ends of time",
     [](auto n) {
       return Section(n, [](auto i, auto) { return i % 2 ? UINT64_MAX - i : std::uint64_t{i}; });
     }},
    {"ever longer gaps",
     [](auto n) {
       return Section(n, [](auto i, auto c) { return std::uint64_t{1} << (i * 12ull / c * 5); });
     }},
    {"small sections", [](auto n) { return Sections(n, 4, Placeholder); }},
    {"empty sections", [](auto n) { return Sections(n, 0, Placeholder); }},
    {"sections of one name", [](auto n) { return Sections(n, 1, Same); }},
    {"longest names", [](auto n) { return Sections(n, 1, LongestName); }},
    {"testpoints of one name",
     [](auto n) {
       std::vector<FileRecord> stamps;
       for (std::uint32_t i = 0; i < n; ++i) stamps.push_back({7, i, now + i, "same"});
       return TaskFile({}, {}, stamps);
     }},
};

}  // namespace

const std::span<const RingShape> ringShapes(rings);
const std::span<const FileShape> fileShapes(files);

}  // namespace growth
