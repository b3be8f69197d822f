#pragma once

#include "commandline.h"

namespace cli {

// See docs/cli.md, tasklog list.
extern const Command listCommand;

}  // namespace cli
