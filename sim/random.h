// Random numbers that are the same on every computer; those of the standard library's distributions are not.
#pragma once

#include <cstdint>

namespace sim {

// The splitmix64 generator.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  uint64_t Next() {
    state_ += 0x9E3779B97F4A7C15;
    uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return z ^ (z >> 31);
  }

  // 0 to bound - 1. For the bounds used here, seconds in nanoseconds, the modulo's bias is far below 1e-8.
  uint64_t Below(uint64_t bound) { return Next() % bound; }

 private:
  uint64_t state_;
};

}  // namespace sim
