// SVG as PNG.
#pragma once

#include <string>

namespace cli {

inline constexpr int mostPngPixels = 32767;  // of a side

// Throws Failure; always where this command was built without librsvg.
std::string PngOf(const std::string& svg, int width, int height);

}  // namespace cli
