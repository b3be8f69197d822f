// Logger buffers with the records of a schedule.
#include "ring.h"

namespace bench {
namespace {

constexpr std::size_t headerWords = 2;
constexpr std::uint32_t marker = 0xFFFFFFFF;

}  // namespace

std::vector<std::uint32_t> RingOf(std::span<const Record> newest, std::size_t cellCount,
                                  std::size_t written) {
  std::vector<std::uint32_t> words(headerWords + 2 * cellCount, marker);
  std::size_t ordinal = written - newest.size();
  const std::size_t lapStart = written - written % cellCount;
  std::uint64_t reference = newest.empty() ? 0 : newest.front().time;
  for (const Record& record : newest) {
    const auto tick = static_cast<std::uint32_t>(record.time & 0x0FFFFFFF);
    std::uint32_t* cell = &words[headerWords + 2 * (ordinal % cellCount)];
    cell[0] = (tick & 0x0FFF0000) << 4 | record.type << 16 | (tick & 0xFFFF);
    cell[1] = record.id;
    if (ordinal < lapStart) reference = record.time;
    ++ordinal;
  }
  words[0] = static_cast<std::uint32_t>(reference >> 32);
  words[1] = static_cast<std::uint32_t>(reference);
  return words;
}

std::vector<std::uint32_t> FullRing(std::span<const Record> records) {
  const std::size_t cellCount = records.size() + 1;
  return RingOf(records, cellCount, cellCount + records.size() / 3);
}

}  // namespace bench
