// One logger: a ring buffer that is started, triggered like an oscilloscope, and then frozen.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "ring.h"

namespace sim {

class Logger {
 public:
  Logger(uint32_t cellCount, int tickBits) : ring_(cellCount, tickBits) {}

  // Empties the buffer and records from now on, the running task first. With a trigger task the buffer
  // freezes half a buffer of records after that task is switched in.
  void Start(uint64_t time, uint32_t runningTask, std::optional<uint32_t> triggerTask);
  void Stop() { recording_ = false; }
  void Clear();
  bool Recording() const { return recording_; }

  // Ignored unless recording. Times never go back.
  void Record(uint64_t time, uint32_t type, uint32_t id);

  // Records written since it was made, and how many of them only bridge silence.
  uint64_t Written() const { return written_; }
  uint64_t Bridged() const { return bridged_; }

  const std::vector<uint32_t>& Words() const { return ring_.Words(); }

 private:
  void BridgeSilence(uint64_t time);
  void Put(uint64_t time, uint32_t type, uint32_t id);

  Ring ring_;
  bool recording_ = false;
  bool triggered_ = false;
  uint32_t recordsLeft_ = 0;  // until the buffer freezes, once triggered
  uint64_t written_ = 0;
  uint64_t bridged_ = 0;
  uint32_t runningTask_ = 0;
  std::optional<uint32_t> triggerTask_;
};

}  // namespace sim
