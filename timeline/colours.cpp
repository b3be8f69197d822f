#include "colours.h"

#include <cstddef>
#include <iterator>

namespace timeline {
namespace {

// Apart from each other, from `issueColour` and from `idleColour` by 0.05 or more in OKLab, as eyes see them
// that see all colours, no red, no green or no blue.
constexpr Rgb taskColours[] = {0xE69F00, 0x56B4E9, 0x009E73, 0x0063B2, 0xCC79A7,
                               0x3B2A8C, 0xE0CF45, 0x8A2A5B, 0x7CCBB0, 0x8F6FE0};

// FNV-1a, its bits mixed once more. It begins with a number under which the tasks of a machine seldom meet.
std::uint64_t HashOf(std::string_view name) {
  std::uint64_t hash = 14695981039346656367u;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
  hash = (hash ^ (hash >> 29)) * 0xBF58476D1CE4E5B9u;
  return hash ^ (hash >> 32);
}

}  // namespace

Rgb ColourOf(std::string_view taskName) {
  return taskColours[static_cast<std::size_t>(HashOf(taskName) % std::size(taskColours))];
}

Rgb InkOn(Rgb background) {
  const auto part = [&](int shift) { return static_cast<int>(background >> shift & 0xFF); };
  const int brightness = (299 * part(16) + 587 * part(8) + 114 * part(0)) / 1000;
  return brightness < 140 ? 0xFFFFFF : 0x1B1F24;
}

}  // namespace timeline
