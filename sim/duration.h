// Durations as scenarios write them: "250us", "1.5 ms".
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace sim {

// Nanoseconds; nothing for what is not a duration, is finer than a nanosecond or longer than a day.
std::optional<uint64_t> ParseDuration(std::string_view text);

}  // namespace sim
