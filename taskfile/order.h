// Which records may stand in a section, and where.
#pragma once

#include "taskfile/format.h"

namespace taskfile {

// Whether a record may stand in a section of this kind, whatever its time.
inline bool MayStandIn(Kind kind, const Record& record, bool isFirst, bool isLast) {
  if (kind == Kind::task || isFirst || isLast) {
    if (record.KoType() <= koLastOfTask) return true;
  }
  return kind != Kind::task && record.KoType() == (kind == Kind::stamps ? koTestpoint : koTimingIssue);
}

// A writer leaves no other bit set in the Ko type. Who else does is believed within the log's period. An area
// of zeros is none of a log that starts later.
inline bool IsBelievable(const Record& record, const Header& header) {
  if (record.koWord == 0 && record.id == 0 && record.time == 0) return header.startTime == 0;
  return record.koWord == record.KoType() ||
         (record.time >= header.startTime && record.time <= header.stopTime);
}

// A log may have records outside its period, but a section is written in the order of time. Where it is not,
// those outside are damaged, unless most of them are. Of two within the period that are the wrong way round
// nobody can tell which is. The first and the last record of a section stand aside: they may be prolog and
// epilog.
class OrderRule {
 public:
  // Where a section breaks off, what stands there is doubtful, whether in order or not.
  explicit OrderRule(const Header& header, bool breaksOff = false) : header_(header), inOrder_(!breaksOff) {}

  void Add(const Record& record) {
    inOrder_ &= record.time >= time_;
    time_ = record.time;
    ++all_;
    outside_ += record.time < header_.startTime || record.time > header_.stopTime ? 1 : 0;
  }
  bool Applies() const { return !inOrder_ && outside_ > 0 && outside_ * 2 <= all_; }
  // Where the rule applies.
  bool IsDamaged(const Record& record) const {
    return record.time < header_.startTime || record.time > header_.stopTime;
  }

 private:
  const Header& header_;
  bool inOrder_;
  u64 time_ = 0;
  u64 all_ = 0;
  u64 outside_ = 0;
};

}  // namespace taskfile
