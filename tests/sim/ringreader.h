// Reads a logger buffer as docs/ring-buffer.md describes it: the lap before the marker, with ticks of 28
// bits.
#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

namespace simtest {

struct RingRecord {
  uint64_t time;
  uint32_t type;
  uint32_t id;

  bool operator==(const RingRecord&) const = default;
  friend std::ostream& operator<<(std::ostream& out, const RingRecord& record) {
    return out << '{' << record.time << ", " << record.type << ", " << record.id << '}';
  }
};

inline std::vector<RingRecord> RecordsOf(const std::vector<uint32_t>& words) {
  std::vector<RingRecord> records;
  uint64_t time = uint64_t{words[0]} << 32 | words[1];
  for (size_t at = 2; at < words.size() && (words[at] >> 16 & 15) != 15; at += 2) {
    const uint64_t tick = words[at] >> 20 << 16 | (words[at] & 0xFFFF);
    time += (tick - time) & 0x0FFFFFFF;
    records.push_back({time, words[at] >> 16 & 15, words[at + 1]});
  }
  return records;
}

}  // namespace simtest
