// Manual pages, from what --help shows.
#pragma once

#include <string>

#include "commandline.h"

namespace cli {

// tasklog.1, in the language of man.
std::string ManPage();
// tasklog-<command>.1.
std::string ManPage(const Command& command);

}  // namespace cli
