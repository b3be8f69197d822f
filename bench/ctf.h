// Writes a log as a trace in the Common Trace Format 1.8, for readers of that format.
#pragma once

#include <string>
#include <tasklog/tasklog.hpp>

namespace bench {

// Makes a folder with the trace of all entries of types 0 to 7: an event of 13 bytes each, with the names of
// its categories as an enumeration. Throws std::runtime_error.
void WriteCtf(const tasklog::Log& log, const std::string& folder);

}  // namespace bench
