#pragma once

#include "commandline.h"

namespace cli {

// See docs/cli.md, tasklog record.
extern const Command recordCommand;

}  // namespace cli
