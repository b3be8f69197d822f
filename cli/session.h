// A recording from the first read to the saved files.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "logger.h"
#include "trigger.h"

namespace cli {

struct RecordRequest {
  std::string target;
  std::string path;
  LoggerChoice loggers;
  bool merge = false;
  bool start = false;
  std::string trigger;                   // of the loggers; empty: leave it as it is
  bool goesOn = false;                   // reads again and again, not once
  std::chrono::nanoseconds duration{0};  // of one that goes on; 0: until something ends it
  std::chrono::nanoseconds interval{0};
  std::chrono::nanoseconds split{0};  // the length of a segment; 0: all goes into one file for each logger
  std::chrono::nanoseconds keep{0};   // segments that ended longer ago are let go; 0: none
  std::optional<Trigger> until = {};
  std::chrono::nanoseconds after{0};  // goes on for so long behind what ends it
};

// Records, saves and reports. Returns the exit code: exitFailure also when something was saved but a read
// failed. Throws Failure when nothing was saved.
int Record(const RecordRequest& request);

}  // namespace cli
