// Marks as a picture shows them: those that would cover each other are one, with their number.
#pragma once

#include <vector>

#include "tracks.h"
#include "window.h"

namespace timeline {

struct MarkCell {
  double x;           // of the first
  std::size_t first;  // in the marks
  std::size_t count;
};

// Marks in the same `cellWidth` pixels, at least 1, are one. Only the cells from that of pixel `begin` to
// that of pixel `end` are asked for. Time: the cells that hold any, times the logarithm of the marks.
std::vector<MarkCell> CellsOf(const Marks& marks, const Window& window, std::uint32_t cellWidth,
                              std::uint32_t begin, std::uint32_t end);
inline std::vector<MarkCell> CellsOf(const Marks& marks, const Window& window, std::uint32_t cellWidth) {
  return CellsOf(marks, window, cellWidth, 0, window.Width() - 1);
}

// The first at `time` or later.
std::size_t FirstMarkAt(const Marks& marks, Ticks time);

}  // namespace timeline
