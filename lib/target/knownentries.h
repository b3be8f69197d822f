// Tells whether a log has the entry of a record already.
#pragma once

#include "target/crowdedtime.h"
#include "target/newentries.h"
#include "target/timecursor.h"

// Looks among the entries that the log held before the append and among those that the append adds. Ask in
// the order in which a ring is read.
class KnownEntries {
 public:
  KnownEntries(const _STLTaskLog& log, const NewEntries& added)
      : log_(log), held_(log.entries), added_(added) {}

  // Whether there is an entry of this type, time and id; throws bad_alloc.
  bool Has(ETLLogType type, u64 time, u32 id, bool forward);
  // Follows a new entry that is complete; throws bad_alloc.
  void Follow(const _STLEntry& entry) {
    if (crowdedTime_.IsAt(entry.timestamp)) crowdedTime_.Add(entry);
  }
  // Follows a task that is now known by another id; throws bad_alloc.
  void ChangeTaskId(const STLTask& task, u32 former) { crowdedTime_.ChangeTaskId(task, former); }
  // Follows a change of any ids.
  void ForgetIds() { crowdedTime_.End(); }

 private:
  // Calls `visit` with the entries of a time, held and new, until it returns true.
  template <class Visit>
  void VisitAt(u64 time, Visit& visit) {
    for (const _STLEntry* entry = held_.MoveTo(time); entry != held_.End(); ++entry) {
      if (entry->timestamp != time) break;
      if (visit(*entry)) return;
    }
    added_.VisitAt(time, visit);
  }
  [[gnu::cold]] void BeginCrowd(u64 time);
  [[gnu::cold]] bool IsInCrowd(ETLLogType type, u32 id) const;

  const _STLTaskLog& log_;
  TimeCursor held_;
  const NewEntries& added_;
  CrowdedTime crowdedTime_;
};
