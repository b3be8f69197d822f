// Reads a lane tick by tick: what several records of one tick mean does not depend on their order.
#pragma once

#include <vector>

#include "cursor.h"

namespace analysis {

inline bool IsSwitch(ETLLogType type) { return (TL_LOGS_SWITCHES >> type) & 1; }

// An entry of types 0 to 7.
struct Record {
  TLEntry entry;
  SubjectIndex subject;  // in slot 0; of a mark only where marks are wanted
  ETLLogType type;
};

// All entries of one time.
class Tick {
 public:
  Ticks time = 0;
  std::size_t switches = 0;
  std::size_t events = 0;

  std::size_t Size() const { return size_; }
  bool HasMarks() const { return size_ > switches + events; }
  const Record* begin() const { return records_.data(); }
  const Record* end() const { return records_.data() + size_; }

  void Clear() { size_ = 0; }
  void Add(const Record& record) {
    if (size_ == records_.size()) records_.resize(2 * size_);
    records_[size_++] = record;
  }

 private:
  std::vector<Record> records_ = std::vector<Record>(16);
  std::size_t size_ = 0;
};

class TickReader {
 public:
  TickReader(const Lane& lane, bool withMarkSubjects)
      : cursor_(lane), withMarkSubjects_(withMarkSubjects), hasNext_(cursor_.Next()) {}

  // False behind the last tick.
  bool Next(Tick& tick) {
    if (!hasNext_) return false;
    tick.Clear();
    tick.time = cursor_.Time();
    std::size_t switches = 0;  // counted aside: side by side in memory, each addition would wait for the last
    std::size_t events = 0;
    do {
      const ETLLogType type = cursor_.Type();
      switches += IsSwitch(type);
      events += type == TLLogTaskEvent;
      const bool withSubject = IsSwitch(type) || type == TLLogTaskEvent || withMarkSubjects_;
      tick.Add({cursor_.Handle(), withSubject ? cursor_.Slot(0) : noSubject, type});
      hasNext_ = cursor_.Next();
    } while (hasNext_ && cursor_.Time() == tick.time);
    tick.switches = switches;
    tick.events = events;
    return true;
  }
  SubjectIndex RunningAt(const Record& record) const { return cursor_.SlotOf(record.entry, 1); }
  // Whether slot 1 says so; an empty one, as before the first switch of a segment, says nothing else.
  bool MayHaveRun(TaskIndex task, const Record& record) const {
    const SubjectIndex running = cursor_.SlotOf(record.entry, 1);
    return running == task || running == noSubject;
  }

 private:
  Cursor cursor_;
  bool withMarkSubjects_;
  bool hasNext_;
};

// A switch, as far as it tells who ran before it.
struct SwitchSlots {
  SubjectIndex subject;
  SubjectIndex running;
};

// Looks ahead of the walk for the next later tick that has switches. It only moves forward, and only when it
// is asked, so that all questions together cost one pass over the switches.
class Lookahead {
 public:
  explicit Lookahead(const Lane& lane);

  // Those of the first tick behind `time` that has any. `time` never goes back.
  const std::vector<SwitchSlots>& Behind(Ticks time);
  // Those of the first tick of all that has any, and when that is; asked before Behind().
  const std::vector<SwitchSlots>& First() const { return switches_; }
  Ticks FirstTime() const { return time_; }

 private:
  void ReadTick();

  Cursor cursor_;
  bool hasNext_;
  Ticks time_ = 0;
  std::vector<SwitchSlots> switches_;  // empty behind the last tick
};

}  // namespace analysis
