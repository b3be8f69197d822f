// The entries around something that a report points at, as `list` shows them.
#pragma once

#include <cstdint>
#include <string>
#include <tasklog/tasklog.hpp>

namespace cli {

// Those from `from` to `to`, ticks, and a few on each side; of many the first and the last. Each line begins
// with `indent`.
std::string EntriesAround(const tasklog::Log& log, std::uint64_t from, std::uint64_t to,
                          const std::string& indent);

}  // namespace cli
