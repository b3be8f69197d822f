// Reads the loggers of a controller into memory.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "lane.h"

namespace python {

struct RecordRequest {
  std::string target;
  std::vector<std::string> loggers;  // as --logger takes them
  bool start = false;
  std::string trigger;
  std::chrono::nanoseconds duration{0};  // 0: one read
  std::chrono::nanoseconds interval{0};
};

// A lane for each logger. `check` is called now and then and ends it all by an exception. Throws
// cli::UsageError and Failed.
std::vector<Lane> Record(const RecordRequest& request, const AnalysisOptions& options,
                         const std::function<void()>& check);

}  // namespace python
