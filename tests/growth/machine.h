// The target-access library of the driver: it costs next to nothing itself, and its tasks and testpoints are
// as odd as a shape wants them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace growth {

struct Machine {
  std::vector<std::uint32_t> ring;
  std::uint32_t taskCount = 0;
  std::uint32_t testpointCount = 0;
  std::string (*nameOf)(std::uint32_t index) = nullptr;  // of a task or testpoint
  bool slicesDiffer = false;                             // of tasks; they are told apart by them, too
};

// The one that the target-access functions of this program speak for.
Machine& TheMachine();

}  // namespace growth
