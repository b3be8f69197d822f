// From the text of a scenario to its data.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "scenario.h"

namespace sim {

class TomlTable;

// Throws a Failure with one line, "SOURCE:LINE: what was expected", when the text is not a scenario.
Scenario ParseScenario(std::string_view text, const std::string& source);

// What must not repeat across the processors of one controller.
struct NamesInUse {
  std::set<std::string> tasks;
  std::map<std::string, uint32_t> testpointAddresses;
};

// Reads the keys "task" and "idle" of a processor into `processor`, whose number is known (taskparser.cpp).
void ParseTasks(TomlTable& table, ProcessorSpec& processor, uint32_t firstTaskId, NamesInUse& names);

}  // namespace sim
