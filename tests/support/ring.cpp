// Builds logger buffers and the targets that hold them.
#include "support/ring.h"

std::uint32_t TimeWord(const RingRecord& record) {
  const auto tick = static_cast<std::uint32_t>(record.tick);
  return (tick & 0x0FFF0000) << 4 | record.type << 16 | (tick & 0xFFFF);
}

std::vector<std::uint32_t> RingWords(std::uint64_t referenceTime, const std::vector<RingRecord>& cells) {
  std::vector<std::uint32_t> words = {static_cast<std::uint32_t>(referenceTime >> 32),
                                      static_cast<std::uint32_t>(referenceTime)};
  for (const RingRecord& cell : cells) {
    words.push_back(TimeWord(cell));
    words.push_back(cell.id);
  }
  return words;
}

std::vector<RingRecord> Laps(std::vector<RingRecord> current, const std::vector<RingRecord>& previous) {
  current.push_back(marker);
  current.insert(current.end(), previous.begin(), previous.end());
  return current;
}

void PutLogger(ScriptedTarget& target, const std::string& logger, const std::vector<std::uint32_t>& words) {
  target.numbers["Target.Mpu.Resolution"] = 1000.0;
  target.numbers[logger + ".BufferSize"] = 4.0 * static_cast<double>(words.size());
  target.numbers[logger + ".BufferAddress"] = static_cast<double>(ringAddress);
  target.memory[ringAddress] = words;
}

void PutCategories(ScriptedTarget& target) {
  target.tasks = {{1, "Idle", 10, 0}, {2, "Ctrl", -1, 5u << 16}, {3, "Comm", 20, 6u << 16}};
  target.numbers["Watchpoint.Entity!Objects"] = 2;
  target.texts["Watchpoint.Entity!Object0"] = "TP1";
  target.numbers["Watchpoint.Entity.TP1.Prop.Address"] = 0x9000;
  target.texts["Watchpoint.Entity!Object1"] = "TP2";
  target.numbers["Watchpoint.Entity.TP2.Prop.Address"] = 0x9004;
}
