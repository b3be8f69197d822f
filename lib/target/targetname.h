// The kernel suffix of a target name: "/@" or "\@" and a number written in the digits 1 to 8.
#pragma once

#include <string>
#include <string_view>

#include "model/types.h"

// Where the suffix begins, at its "/" or "\"; npos when the name has none.
std::string_view::size_type FindKernelSuffix(std::string_view target);

// The number in the suffix, modulo 2^32; 0 without one.
u32 KernelOfTarget(std::string_view target);

// The name through which a kernel's logger is reached: without its suffix, and with "/@<kernel>" behind it
// when `kernel` is above 0.
std::string WorkingTargetName(std::string_view target, i32 kernel);
