#pragma once

#include "commandline.h"

namespace cli {

// See docs/cli.md, tasklog info.
extern const Command infoCommand;

}  // namespace cli
