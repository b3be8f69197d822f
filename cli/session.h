// A recording from the first read to the saved files.
#pragma once

#include <chrono>
#include <string>

#include "logger.h"

namespace cli {

struct RecordRequest {
  std::string target;
  std::string path;
  LoggerChoice loggers;
  bool merge = false;
  bool start = false;
  std::string trigger;                   // empty: leave it as it is
  std::chrono::nanoseconds duration{0};  // 0: read once
  std::chrono::nanoseconds interval{0};
};

// Records, saves and reports. Returns the exit code: exitFailure also when something was saved but a read
// failed. Throws Failure when nothing was saved.
int Record(const RecordRequest& request);

}  // namespace cli
