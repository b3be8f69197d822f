// Logger buffers with the records of a schedule: docs/ring-buffer.md.
#pragma once

#include <span>

#include "schedule.h"

namespace bench {

// A buffer into which `written` records have gone, of which `newest` are the last ones: all of them, or as
// many as the cells hold beside the marker.
std::vector<std::uint32_t> RingOf(std::span<const Record> newest, std::size_t cellCount, std::size_t written);

// A buffer that just holds all of these, one third of them in the current lap.
std::vector<std::uint32_t> FullRing(std::span<const Record> records);

}  // namespace bench
