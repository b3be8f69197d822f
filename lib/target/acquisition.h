// What one append from a target works with. Nothing of it outlives the append.
#pragma once

#include <string>

#include "model/model.h"
#include "target/crowdedtime.h"
#include "target/idindex.h"
#include "target/newentries.h"
#include "target/timecursor.h"

struct _STLTaskLog::Acquisition {
  Acquisition(_STLTaskLog& log, const std::string& targetName, int tickBits, std::size_t backwardRoom,
              std::size_t forwardRoom)
      : target(targetName),
        timeBits(tickBits),
        held(log.entries),
        added(log.entries, backwardRoom, forwardRoom) {}

  // Calls `visit` with the entries of a time, held and new, until it returns true; returns whether it did.
  template <class Visit>
  bool AnyAt(u64 timestamp, Visit visit) {
    for (const _STLEntry* entry = held.MoveTo(timestamp); entry != held.End(); ++entry) {
      if (entry->timestamp != timestamp) break;
      if (visit(*entry)) return true;
    }
    return added.AnyAt(timestamp, visit);
  }
  // For a time of which there are many entries.
  [[gnu::cold]] void BeginCrowd(u64 timestamp) {
    crowdedTime.Begin(timestamp);
    AnyAt(timestamp, [this](const _STLEntry& entry) { return crowdedTime.Add(entry), false; });
  }
  // The categories, or their ids, have changed.
  void UpdateIds(const std::vector<_STLCategory*>& all) {
    ids.Build(all);
    crowdedTime.End();
  }

  const std::string& target;  // working target name
  const int timeBits;         // width of the tick field
  u64 time = 0;               // of the record before in this pass, in ticks
  TimeCursor held;            // over the entries of the log
  NewEntries added;
  CrowdedTime crowdedTime;
  IdIndex ids;  // built when the first id is looked up
  bool tasksFetched = false;
  bool testpointsFetched = false;
  u32 fetchError = 0;  // of the last fetch that failed
};
