// Logger buffers, word by word, and targets that hold one: docs/ring-buffer.md.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/scriptedtarget.h"

struct RingRecord {
  std::uint32_t type;
  std::uint64_t tick;  // the low 28 bits go into the record
  std::uint32_t id;
};

inline constexpr RingRecord marker{15, 0, 0};

// A record's time/type word.
std::uint32_t TimeWord(const RingRecord& record);

// A whole buffer: the reference time, then the cells.
std::vector<std::uint32_t> RingWords(std::uint64_t referenceTime, const std::vector<RingRecord>& cells);

// The cells of a buffer that has been written round: the current lap, the marker, the previous lap.
std::vector<RingRecord> Laps(std::vector<RingRecord> current, const std::vector<RingRecord>& previous);

inline constexpr std::int64_t ringAddress = 0x1000;

// Gives a target the variables and the memory of a logger, and a timer of 1000000 ticks per second.
void PutLogger(ScriptedTarget& target, const std::string& logger, const std::vector<std::uint32_t>& words);

// Gives a target tasks Idle (id 1), Ctrl (2) and Comm (3), with priorities 0, 5 and 6 and time slices 10, -1
// and 20, and the testpoints TP1 at 0x9000 and TP2 at 0x9004.
void PutCategories(ScriptedTarget& target);
