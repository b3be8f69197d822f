#include "tick.h"

namespace analysis {

TickReader::TickReader(const Lane& lane, bool withMarkSubjects)
    : cursor_(lane), withMarkSubjects_(withMarkSubjects), hasNext_(cursor_.Next()) {}

bool TickReader::Next(Tick& tick) {
  if (!hasNext_) return false;
  tick.time = cursor_.Time();
  tick.records.clear();
  tick.switches = 0;
  tick.events = 0;
  do {
    Take(tick);
    hasNext_ = cursor_.Next();
  } while (hasNext_ && cursor_.Time() == tick.time);
  return true;
}

void TickReader::Take(Tick& tick) {
  const ETLLogType type = cursor_.Type();
  const bool isSwitch = IsSwitch(type);
  const bool isEvent = type == TLLogTaskEvent;
  tick.switches += isSwitch;
  tick.events += isEvent;
  const bool withSubject = isSwitch || isEvent || withMarkSubjects_;
  tick.records.push_back({cursor_.Handle(), withSubject ? cursor_.Slot(0) : noSubject, type});
}

Lookahead::Lookahead(const Lane& lane) : cursor_(lane, TL_LOGS_SWITCHES), hasNext_(cursor_.Next()) {
  ReadTick();
}

const std::vector<SwitchSlots>& Lookahead::Behind(Ticks time) {
  while (!switches_.empty() && time_ <= time) ReadTick();
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
