// A controller for measurements: it costs next to nothing itself. Its tasks and testpoints are those of a
// schedule; every logger of it is the one buffer that it holds.
#pragma once

#include <cstdint>
#include <vector>

namespace bench {

struct Controller {
  std::uint32_t taskCount = 0;
  std::vector<std::uint32_t> ring;
};

// The one that the target-access functions of this program speak for.
Controller& TheController();

}  // namespace bench
