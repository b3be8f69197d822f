#include "tick.h"

namespace analysis {

Lookahead::Lookahead(const Lane& lane) : cursor_(lane, TL_LOGS_SWITCHES), hasNext_(cursor_.Next()) {
  ReadTick();
}

const std::vector<SwitchSlots>& Lookahead::Behind(Ticks time) {
  if (switches_.empty() || time_ > time) return switches_;
  while (hasNext_ && cursor_.Time() <= time) hasNext_ = cursor_.Next();
  ReadTick();
  return switches_;
}

void Lookahead::ReadTick() {
  switches_.clear();
  if (!hasNext_) return;
  time_ = cursor_.Time();
  do {
    switches_.push_back({cursor_.Slot(0), cursor_.Slot(1)});
    hasNext_ = cursor_.Next();
  } while (hasNext_ && cursor_.Time() == time_);
}

}  // namespace analysis
