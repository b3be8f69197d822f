// What a reader makes of a sound file and its writer did not mean: docs/file-format.md, What a file cannot
// carry.
#pragma once

#include <vector>

#include "taskfile/check.h"

namespace taskfile {

struct Remark {
  u64 count = 0;
  u64 firstTime = 0;

  void Add(u64 time, u64 more = 1) {
    if (more == 0) return;
    firstTime = count == 0 ? time : std::min(firstTime, time);
    count += more;
  }
};

struct Remarks {
  Remark withoutLeft = {};     // switches without the record of the task that left: their type reads as 4
  Remark withoutCame = {};     // and without that of the task that came
  Remark ofOneTime = {};       // switches that share their time with others
  Remark eventsAtSwitch = {};  // task events that share theirs with the record of a task that left
  Remark prologsRead = {};     // prologs that read as entries
  Remark dropped = {};         // entries that read as a prolog or an epilog, and are dropped
  Remark outside = {};         // entries outside the log's period
};

// Takes n log s, s being the number of sections, and as much memory as half of the file.
Remarks FindRemarks(std::string_view bytes, const Header& header, const std::vector<Section>& sections,
                    const Progress& progress);

}  // namespace taskfile
