// The colours of tasks and marks.
#pragma once

#include <cstdint>
#include <string_view>

namespace timeline {

using Rgb = std::uint32_t;  // 0xRRGGBB

// Always the same for one name, in every recording. The colours differ for all kinds of colour vision, and
// from that of issues; there are fewer of them than tasks, so a label always stands beside.
Rgb ColourOf(std::string_view taskName);
inline constexpr Rgb idleColour = 0xE3E6EA;
inline constexpr Rgb issueColour = 0xD01C1F;
// Black or white, whichever is easier to read on `background`.
Rgb InkOn(Rgb background);

}  // namespace timeline
