// Runs the built command under the eyes of the test, which can end it before any of its calls into the
// system, or make any one of them fail. Calls count from the one on that creates the unfinished output.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "cli/program.h"

enum class Disturbance { none, killed, callFails, waits };

struct TracedResult {
  int exitCode;                    // minus the signal when one ended it
  std::vector<std::string> calls;  // those that concern files, in order: "write", "rename", ...
  int renames;                     // how many succeeded
};

// False where the system does not let one process follow the calls of another, or the machine is none that is
// known here.
bool CanTrace();

// `at` is the number of the call that is disturbed, from 1. A failing call is not made and says that the disk
// is full. One that waits is made when `meanwhile` is over.
TracedResult RunTraced(
    const TempFolder& folder, const std::vector<std::string>& arguments,
    Disturbance disturbance = Disturbance::none, std::size_t at = 0,
    const std::function<void()>& meanwhile = [] {});
