// What the pixels of a row show of one kind of spans.
#pragma once

#include <vector>

#include "spans.h"
#include "window.h"

namespace timeline {

// A span at least as wide as a pixel. It may reach beyond the window.
struct Slice {
  std::size_t index;  // in the spans
  double begin;       // pixels
  double end;
  bool fadesIn;  // cut there
  bool fadesOut;
};

// What spans narrower than a pixel cover of one: more than 0, exact but for the rounding to a float.
struct Share {
  std::uint32_t x;
  float part;  // of the pixel's time
};

struct Layer {
  std::vector<Slice> slices;  // in order
  std::vector<Share> shares;  // from left to right; a pixel without any has none
  bool IsEmpty() const { return slices.empty() && shares.empty(); }
};

// Time: the pixels that show anything, times the logarithm of the spans from one to the next; stretches
// without spans and slices are passed in one step.
Layer LayerOf(const Spans& spans, const Window& window);

}  // namespace timeline
