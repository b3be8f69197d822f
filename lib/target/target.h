// What the library makes of a target name, of the numbers that a controller reports, and of its start
// procedure.
#pragma once

#include <string>
#include <string_view>

#include "model/types.h"

// The kernel suffix of a target name: "/@" or "\@" and a number written in the digits 1 to 8.

// The place of the suffix's "/" or "\"; npos when the name has none.
std::string_view::size_type FindKernelSuffix(std::string_view target);

// The number in the suffix, modulo 2^32; 0 without one.
u32 KernelOfTarget(std::string_view target);

// The name through which a kernel's logger is reached: without its suffix, and with "/@<kernel>" behind it
// when `kernel` is above 0.
std::string WorkingTargetName(std::string_view target, i32 kernel);

// What TLStartLog does, for a target that is not null. Allocates nothing.
u32 StartLog(const char* target, const char* triggerTask);

// The name of a timing issue: the four characters of its code, or "0x%08X" when one is not printable.
std::string TimingIssueName(u32 code);

// Numbers arrive as doubles. Truncated toward zero; 0 for what no 64-bit integer holds, such as NaN.
inline i64 TruncateToI64(double value) {
  constexpr double limit = 9223372036854775808.0;  // 2^63
  return value >= -limit && value < limit ? static_cast<i64>(value) : 0;
}

// The low 32 bits of the truncated value.
inline u32 TruncateToU32(double value) { return static_cast<u32>(TruncateToI64(value)); }
