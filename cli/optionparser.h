// From the words behind a command to the places of its options. The only part that knows CLI11, whose header
// takes longer to compile than most of the rest.
#pragma once

#include <string>
#include <vector>

#include "commandline.h"

namespace cli {

// What --help prints.
std::string HelpOf(const Syntax& syntax);

// False when help is asked for. Throws UsageError.
bool Parse(const Syntax& syntax, std::vector<std::string> arguments);

}  // namespace cli
