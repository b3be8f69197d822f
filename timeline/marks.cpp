#include "marks.h"

#include <algorithm>

namespace timeline {

std::size_t FirstMarkAt(const Marks& marks, Ticks time) {
  const auto found = std::partition_point(marks.begin(), marks.end(),
                                          [&](const MarkPoint& mark) { return mark.time < time; });
  return static_cast<std::size_t>(found - marks.begin());
}

std::vector<MarkCell> CellsOf(const Marks& marks, const Window& window, std::uint32_t cellWidth,
                              std::uint32_t begin, std::uint32_t end) {
  // The first mark that is not left of a pixel; the window's end counts to its last pixel.
  const auto firstAt = [&](std::uint64_t x) {
    if (x >= window.Width())
      return window.To() == UINT64_MAX ? marks.size() : FirstMarkAt(marks, window.To() + 1);
    const Window::Edge edge = window.EdgeOf(static_cast<std::uint32_t>(x));
    return FirstMarkAt(marks, edge.part == 0 ? edge.tick : edge.tick + 1);
  };
  std::vector<MarkCell> cells;
  const std::size_t last = firstAt((std::uint64_t{end} / cellWidth + 1) * cellWidth);
  for (std::size_t first = firstAt(begin / cellWidth * cellWidth); first < last;) {
    const std::uint64_t cell = window.PixelOf(marks[first].time) / cellWidth;
    const std::size_t next = firstAt((cell + 1) * cellWidth);
    cells.push_back({window.XOf(marks[first].time), first, next - first});
    first = next;
  }
  return cells;
}

}  // namespace timeline
