#include "faults.h"

#include <fmt/format.h>

#include <chrono>
#include <thread>

#include "status.h"

namespace sim {
namespace {

bool Matches(const Fault& fault, std::string_view call, std::string_view name) {
  return (fault.call == "any" || fault.call == call) && (fault.name.empty() || fault.name == name);
}

bool Strikes(const Fault& fault, uint64_t call) {
  if (call < fault.from) return false;
  const uint64_t since = call - fault.from;
  return since % fault.every == 0 && since / fault.every < fault.count;
}

[[noreturn]] void Throw(const Fault& fault, std::string_view call, uint64_t number) {
  if (!fault.text.empty()) throw Failure{fault.status, fault.text};
  const std::string general = GeneralTextOf(fault.status);
  throw Failure{fault.status, fmt::format("{} (injected into call {} of {})", general, number, call)};
}

}  // namespace

FaultPlan::FaultPlan(const std::vector<Fault>& faults) {
  for (const Fault& fault : faults) faults_.push_back({fault, 0});
}

std::optional<double> FaultPlan::Apply(std::string_view call, std::string_view name) {
  std::vector<Counted> striking;
  {
    const std::lock_guard lock(mutex_);
    for (Counted& counted : faults_) {
      if (!Matches(counted.fault, call, name)) continue;
      ++counted.calls;
      if (Strikes(counted.fault, counted.calls)) striking.push_back(counted);
    }
  }
  std::optional<double> result;
  for (const Counted& counted : striking) {
    // Outside the lock: only this call waits.
    std::this_thread::sleep_for(std::chrono::nanoseconds(counted.fault.delayNs));
    if (counted.fault.status != 0) Throw(counted.fault, call, counted.calls);
    if (counted.fault.result) result = counted.fault.result;
  }
  return result;
}

}  // namespace sim
