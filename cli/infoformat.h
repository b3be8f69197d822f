// Prints what a log holds, for people and for programs. docs/cli.md, tasklog info, has the fields.
#pragma once

#include <fmt/format.h>

#include <string>
#include <tasklog/tasklog.hpp>

namespace cli {

void AppendInfoText(fmt::memory_buffer& out, const std::string& path, const tasklog::Log& log);

// One JSON object, without a line break at its end.
void AppendInfoJson(fmt::memory_buffer& out, const std::string& path, const tasklog::Log& log);

}  // namespace cli
