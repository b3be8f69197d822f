#pragma once

#include "commandline.h"

namespace cli {

// See docs/cli.md, tasklog start.
extern const Command startCommand;

}  // namespace cli
