// Numbers arrive from a controller as doubles. These make integers of them without undefined results.
#pragma once

#include "model/types.h"

// Truncated toward zero; 0 for what no 64-bit integer holds, such as NaN.
inline i64 TruncateToI64(double value) {
  constexpr double limit = 9223372036854775808.0;  // 2^63
  return value >= -limit && value < limit ? static_cast<i64>(value) : 0;
}

// The low 32 bits of the truncated value.
inline u32 TruncateToU32(double value) { return static_cast<u32>(TruncateToI64(value)); }
