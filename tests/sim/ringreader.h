// Reads a logger buffer as docs/ring-buffer.md describes it, with ticks of 28 bits.
#pragma once

#include <algorithm>
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
    return out << '{' << record.time << ", " << record.type << ", 0x" << std::hex << record.id << std::dec
               << '}';
  }
};

class RingReader {
 public:
  explicit RingReader(const std::vector<uint32_t>& words) : words_(words), slots_((words.size() - 2) / 2) {}

  // All records, oldest first.
  std::vector<RingRecord> Records() const {
    const uint64_t reference = uint64_t{words_[0]} << 32 | words_[1];
    std::vector<RingRecord> current;
    size_t slot = 0;
    for (uint64_t time = reference; slot < slots_ && Type(slot) != 15; ++slot) {
      time += (Tick(slot) - time) & mask;
      current.push_back({time, Type(slot), words_[3 + 2 * slot]});
    }
    std::vector<RingRecord> all;
    size_t behind = slots_;
    for (uint64_t time = reference; behind > slot + 1 && Type(behind - 1) != 15; --behind) {
      time -= (time - Tick(behind - 1)) & mask;
      all.push_back({time, Type(behind - 1), words_[3 + 2 * (behind - 1)]});
    }
    std::reverse(all.begin(), all.end());
    all.insert(all.end(), current.begin(), current.end());
    return all;
  }

 private:
  uint32_t First(size_t slot) const { return words_[2 + 2 * slot]; }
  uint32_t Type(size_t slot) const { return First(slot) >> 16 & 15; }
  uint64_t Tick(size_t slot) const { return (First(slot) >> 20 << 16) | (First(slot) & 0xFFFF); }
  static constexpr uint64_t mask = (1 << 28) - 1;

  const std::vector<uint32_t>& words_;
  size_t slots_;
};

}  // namespace simtest
