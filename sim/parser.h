// From the text of a scenario to its data.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "scenario.h"

namespace sim {

class TomlTable;

// Throws a Failure with one line, "SOURCE:LINE: what was expected", when the text is not a scenario.
Scenario ParseScenario(std::string_view text, const std::string& source);

// What must not repeat across the processors of one controller.
struct NamesInUse {
  struct TaskPlace {
    int processor;  // as ProcessorSpec::number
    uint32_t index;
  };
  struct TestpointPlace {
    int processor;
    uint32_t address;
  };

  std::map<std::string, TaskPlace> tasks;
  std::map<std::string, TestpointPlace> testpoints;
};

// Reads the keys "task" and "idle" of a processor into `processor`, whose number is known (taskparser.cpp).
void ParseTasks(TomlTable& table, ProcessorSpec& processor, uint32_t firstTaskId, NamesInUse& names);

}  // namespace sim
