// Every truncation, every byte, and thousands of random damages: what repair makes of a file is sound, holds
// nothing that was not there, and all that lay whole in a whole section.
#include <gtest/gtest.h>

#include <random>

#include "damagedfile.h"
#include "taskfile/format.h"

namespace {

const char* const goldenFiles[] = {"golden/example.hex", "golden/all_types.hex", "golden/empty.hex"};

void Report(const Counts& counts) {
  testing::Test::RecordProperty("files", std::to_string(counts.files));
  testing::Test::RecordProperty("nothingLeft", std::to_string(counts.nothingLeft));
  testing::Test::RecordProperty("wholeRecords", std::to_string(counts.wholeRecords));
  testing::Test::RecordProperty("otherRecords", std::to_string(counts.otherRecords));
  testing::Test::RecordProperty("otherKept", std::to_string(counts.otherKept));
  testing::Test::RecordProperty("prologsRead", std::to_string(counts.prologsRead));
  testing::Test::RecordProperty("damagedKept", std::to_string(counts.damagedKept));
}

TEST(Damage, EveryTruncation) {
  Counts counts;
  for (const char* name : goldenFiles) {
    const Sound sound(ReadHex(name));
    for (std::size_t size = 0; size <= sound.File().size(); ++size) {
      SCOPED_TRACE(testing::Message() << name << " up to " << size);
      sound.CheckRepaired(
          Bytes(sound.File().begin(), sound.File().begin() + static_cast<std::ptrdiff_t>(size)), counts);
      if (HasFailure()) break;
    }
  }
  Report(counts);
}

TEST(Damage, EveryByte) {
  Counts counts;
  for (const char* name : goldenFiles) {
    const Sound sound(ReadHex(name));
    for (std::size_t at = 0; at < sound.File().size(); ++at)
      for (const int value :
           {0x00, 0x01, 0x07, 0x20, 0x7F, 0x80, 0xFF, sound.File()[at] + 1, sound.File()[at] ^ 4}) {
        SCOPED_TRACE(testing::Message() << name << " with " << value << " at " << at);
        Bytes damaged = sound.File();
        damaged[at] = static_cast<std::uint8_t>(value);
        sound.CheckRepaired(damaged, counts);
      }
  }
  Report(counts);
}

// Takes turns among a few kinds of damage.
class Damager {
 public:
  explicit Damager(const Bytes& file) : file_(file) {}

  Bytes Next() {
    Bytes damaged = file_;
    switch (Below(6)) {
      case 0: Change(damaged, 1 + Below(8)); break;
      case 1: Overwrite(damaged, [](std::size_t) { return 0; }); break;
      case 2: Overwrite(damaged, [](std::size_t) { return 0xFF; }); break;
      case 3: Overwrite(damaged, [&](std::size_t) { return static_cast<int>(Below(256)); }); break;
      case 4: damaged.resize(Below(damaged.size())); break;
      default: StopWriting(damaged);
    }
    if (Below(4) == 0 && !damaged.empty()) Change(damaged, 1);
    return damaged;
  }

 private:
  std::size_t Below(std::size_t end) { return random_() % end; }
  void Change(Bytes& bytes, std::size_t count) {
    for (; count > 0; --count) bytes[Below(bytes.size())] ^= static_cast<std::uint8_t>(1 + Below(255));
  }
  template <class Value>
  void Overwrite(Bytes& bytes, Value value) {
    const std::size_t begin = Below(bytes.size());
    const std::size_t size = std::min(1 + Below(bytes.size() / 4 + 1), bytes.size() - begin);
    for (std::size_t i = 0; i < size; ++i) bytes[begin + i] = static_cast<std::uint8_t>(value(i));
  }

  // As a full disk leaves it: the section that was being written has a count of 0.
  void StopWriting(Bytes& bytes) {
    const PlacedSection& section = placed_.sections[Below(placed_.sections.size())];
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(section.end - 4), 4, std::uint8_t{0});
    bytes.resize(section.end + Below(std::min<std::size_t>(bytes.size() - section.end, 2000) + 1));
  }

  const Bytes& file_;
  PlacedFile placed_{file_};
  std::mt19937_64 random_{1};
};

// Six tasks that hand a processor round, with testpoints and timing issues.
Bytes LongFile() {
  const FileHeader header{.startTime = 70'000, .stopTime = 100'000};
  std::vector<FileSection> tasks;
  for (std::uint32_t i = 0; i < 6; ++i)
    tasks.push_back({"Task" + std::string(i, 'x'), i, 10, {{i == 0 ? 2u : 4u, 0, header.startTime}}});
  std::vector<FileRecord> stamps{{3, 0, header.startTime}};
  std::vector<FileRecord> issues = stamps;
  std::uint32_t running = 0;
  for (std::uint64_t time = 70'010; time < 99'990; time += 150) {
    const auto next = static_cast<std::uint32_t>((running + 1 + time % 5) % 6);
    const std::uint32_t id = 0x20000 + next;
    tasks[running].records.push_back({5, id, time});
    tasks[next].records.push_back({2, id, time});
    if (time % 4 == 2) tasks[running].records.push_back({0, 0x20000 + running, time + 30});
    if (time % 20 == 10) stamps.push_back({7, 0xFF0000, time + 20, "SegmentBegin"});
    if (time % 7 == 0) issues.push_back({8, 0x4F56524E, time + 20, "OVRN"});
    running = next;
  }
  for (FileSection& task : tasks)
    task.records.push_back({taskfile::epilogKoTypes[task.records.back().koType], 0, header.stopTime});
  return TaskFile(header, tasks, stamps, issues);
}

TEST(Damage, TenThousandAtRandom) {
#ifdef __SANITIZE_ADDRESS__
  constexpr int each = 800;  // sanitizers take tenfold the time
#else
  constexpr int each = 3334;
#endif
  Counts counts;
  const Sound files[] = {Sound(ReadHex(goldenFiles[0])), Sound(ReadHex(goldenFiles[1])), Sound(LongFile())};
  for (const Sound& sound : files) {
    Damager damager(sound.File());
    for (int i = 0; i < each; ++i) {
      SCOPED_TRACE(i);
      sound.CheckRepaired(damager.Next(), counts);
    }
  }
  Report(counts);
}

}  // namespace
