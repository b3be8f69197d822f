// Instructions that operations take, as callgrind counts them.
#pragma once

#include <map>
#include <string>

namespace growth {

// Instructions by the name under which the driver dumped them. Runs the driver; throws std::runtime_error.
std::map<std::string, double> CountInstructions();

}  // namespace growth
