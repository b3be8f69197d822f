// Counts the instructions of one operation under callgrind, which begins anew behind each dump.
#pragma once

#include <valgrind/callgrind.h>

#include <string>

#include "growth/sizes.h"

namespace growth {

template <class Operation>
void Count(const std::string& name, Setting setting, Operation operation) {
  const std::string label = LabelOf(name, setting);
  CALLGRIND_TOGGLE_COLLECT;
  operation();
  CALLGRIND_DUMP_STATS_AT(label.c_str());
  CALLGRIND_TOGGLE_COLLECT;
}

// `prefix` begins the names of what is counted. `path` leads to a TaskLog file.
void CountExports(const std::string& prefix, Setting setting, const std::string& path);
void CountRepairs(const std::string& prefix, Setting setting, const std::string& path);

}  // namespace growth
