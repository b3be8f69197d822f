// Prints what a log holds, for people and for programs. docs/cli.md, tasklog info, has the fields.
#pragma once

#include <fmt/format.h>

#include "recording.h"

namespace cli {

void AppendInfoText(fmt::memory_buffer& out, const Lane& lane, const LaneLog& loaded);

// One JSON object, without a line break at its end.
void AppendInfoJson(fmt::memory_buffer& out, const Lane& lane, const LaneLog& loaded);

}  // namespace cli
