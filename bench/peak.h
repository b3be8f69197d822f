// Measures the memory of one operation; for the process that memory_bench.cpp starts.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

// Behind it: operation, subject, number of entries.
inline constexpr char peakOption[] = "--peak";

// Prints the bytes that the operation needed at its peak; returns the exit code.
int PrintPeak(const std::string& operation, const std::string& subject, std::int64_t size);

}  // namespace bench
