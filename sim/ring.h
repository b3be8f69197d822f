// A logger's buffer in controller memory: docs/ring-buffer.md, written from that page alone.
#pragma once

#include <cstdint>
#include <vector>

namespace sim {

// Types of records. docs/scenarios.md says which cause gives which type.
inline constexpr uint32_t recordPreempted = 0;
inline constexpr uint32_t recordCycleDone = 1;
inline constexpr uint32_t recordTaskEvent = 2;
inline constexpr uint32_t recordFromIdle = 3;
inline constexpr uint32_t recordPlainSwitch = 4;
inline constexpr uint32_t recordSliceUsed = 5;
inline constexpr uint32_t recordTestpoint = 6;
inline constexpr uint32_t recordTimingIssue = 7;

// The encoder. At all times Words() is a buffer that decodes to the newest records written.
class Ring {
 public:
  // cellCount: at least 2. tickBits: 28 or 16.
  Ring(uint32_t cellCount, int tickBits);

  // Empties the buffer: markers only. Later records lie at or after `time`.
  void Clear(uint64_t time);

  // Writes a record. `time` lies at or after Newest() and less than Span() behind it.
  void Write(uint64_t time, uint32_t type, uint32_t id);

  uint64_t Newest() const { return newest_; }  // time of the newest record, or that given to Clear()
  uint64_t Span() const { return uint64_t{1} << tickBits_; }
  uint32_t CellCount() const { return cellCount_; }
  const std::vector<uint32_t>& Words() const { return words_; }

 private:
  void SetReference(uint64_t time);
  void PutCell(uint32_t cell, uint32_t timeType, uint32_t id);
  void PutMarker(uint32_t cell);
  bool FirstCellsLookNarrow() const;
  void StartLapOver();

  uint32_t cellCount_;
  int tickBits_;
  uint32_t next_ = 0;  // cell of the marker, where the next record goes
  uint64_t newest_ = 0;
  std::vector<uint32_t> words_;
};

}  // namespace sim
