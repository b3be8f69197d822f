// The faults that a scenario injects into calls.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "scenario.h"

namespace sim {

class FaultPlan {
 public:
  explicit FaultPlan(const std::vector<Fault>& faults);

  // Counts a call and does to it what the scenario says: waits, throws a Failure, or gives the result that a
  // procedure answers instead of its own. `name` is the variable or procedure, if the call has one.
  // May be called from several threads.
  std::optional<double> Apply(std::string_view call, std::string_view name);

 private:
  struct Counted {
    Fault fault;
    uint64_t calls = 0;
  };

  std::mutex mutex_;
  std::vector<Counted> faults_;
};

}  // namespace sim
