// Commands whose exit code is a verdict, for build servers: 0 kept, 1 broken, 2 it could not be told.
#pragma once

#include <functional>

#include "failure.h"

namespace cli {

inline constexpr int exitKept = exitSuccess;
inline constexpr int exitBroken = 1;
inline constexpr int exitUntold = exitUsage;

// Runs `judge`, which returns one of them. Whatever keeps it from an answer is printed and becomes
// exitUntold.
int RunGate(const std::function<int()>& judge);

}  // namespace cli
