// What one append from a target works with. Nothing of it outlives the append.
#pragma once

#include <string>

#include "model/model.h"
#include "target/idindex.h"
#include "target/knownentries.h"
#include "target/newentries.h"

struct _STLTaskLog::Acquisition {
  Acquisition(_STLTaskLog& log, const std::string& targetName, int tickBits, std::size_t backwardRoom,
              std::size_t forwardRoom)
      : target(targetName),
        timeBits(tickBits),
        added(log.entries, backwardRoom, forwardRoom),
        known(log, added) {}

  const std::string& target;  // working target name
  const int timeBits;         // width of the tick field
  u64 time = 0;               // of the record before in this pass, in ticks
  NewEntries added;
  KnownEntries known;
  IdIndex ids;  // built when the first id is looked up
  bool tasksFetched = false;
  bool testpointsFetched = false;
  u32 fetchError = 0;  // of the last fetch that failed
};
