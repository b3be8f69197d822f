// What a TaskLog file has no place for: docs/file-format.md, What a file cannot carry.
#pragma once

#include <string>
#include <tasklog/tasklog.hpp>

namespace cli {

// What of `log` is missing in the file that was read back: "1 testpoint and the types of 2 switches"; empty
// when nothing is. The order of entries of one tick, who ran at them, and the type of a switch that does not
// know who left are not looked at: no log has them for sure.
std::string NotCarried(const tasklog::Log& log, const tasklog::Log& readBack);

}  // namespace cli
