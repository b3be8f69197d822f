#include "scenario.h"

namespace sim {
namespace {

constexpr double defaultClockHz = 33'000'000;

// Hosts compute the rate in this way from the variables that the scenario offers, so the timer runs at it.
uint64_t TicksPerSecond(const Scenario& scenario) {
  if (scenario.resolutionNs) return static_cast<uint64_t>(1e9 / *scenario.resolutionNs);
  if (scenario.cpu == "PPC603") {
    return static_cast<uint64_t>(scenario.busClockHz.value_or(defaultClockHz)) / 4;
  }
  return static_cast<uint64_t>(scenario.cpuClockHz.value_or(defaultClockHz));
}

}  // namespace

TickClock Scenario::Clock() const { return {TicksPerSecond(*this), startTicks}; }

// FNV-1a.
uint64_t Hash(std::string_view text) {
  uint64_t hash = 0xCBF29CE484222325;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  return hash;
}

}  // namespace sim
