#include "logger.h"

namespace sim {
namespace {

bool IsSwitch(uint32_t type) { return type <= recordSliceUsed && type != recordTaskEvent; }

}  // namespace

void Logger::Start(uint64_t time, uint32_t runningTask, std::optional<uint32_t> triggerTask) {
  ring_.Clear(time);
  recording_ = true;
  triggered_ = false;
  triggerTask_ = triggerTask;
  runningTask_ = runningTask;
  Put(time, recordPlainSwitch, runningTask);
}

void Logger::Clear() {
  recording_ = false;
  ring_.Clear(0);
}

void Logger::Record(uint64_t time, uint32_t type, uint32_t id) {
  if (!recording_) return;
  BridgeSilence(time);
  Put(time, type, id);
  if (!IsSwitch(type)) return;
  runningTask_ = id;
  if (triggered_ || id != triggerTask_) return;
  triggered_ = true;
  recordsLeft_ = ring_.CellCount() / 2;
}

// Neighbouring records must lie less than one span of the tick field apart. Where nothing happens for longer,
// events of the running task keep the times readable. Of a long row of them only those are written that the
// buffer can hold.
void Logger::BridgeSilence(uint64_t time) {
  const uint64_t silence = time - ring_.Newest();
  const uint64_t strideTicks = ring_.Span() - 1;
  const uint64_t count = silence < ring_.Span() ? 0 : (silence - 1) / strideTicks;
  if (recording_ && !triggered_ && count > ring_.CellCount()) {
    ring_.Clear(ring_.Newest() + (count - ring_.CellCount()) * strideTicks);
  }
  while (recording_ && time - ring_.Newest() >= ring_.Span()) {
    Put(ring_.Newest() + strideTicks, recordTaskEvent, runningTask_);
    ++bridged_;
  }
}

void Logger::Put(uint64_t time, uint32_t type, uint32_t id) {
  if (!recording_) return;
  ring_.Write(time, type, id);
  ++written_;
  if (triggered_ && --recordsLeft_ == 0) recording_ = false;
}

}  // namespace sim
