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

struct Layer {
  std::vector<Slice> slices;  // in order
  // Of each pixel the share of its time that spans narrower than a pixel cover, exact but for the rounding to
  // a float; 0 only where there is none.
  std::vector<float> shares;
  bool IsEmpty() const { return isEmpty; }
  bool isEmpty = true;
};

// Time: the pixels that show anything, times the logarithm of the spans from one to the next; stretches
// without spans and slices are passed in one step.
Layer LayerOf(const Spans& spans, const Window& window);

}  // namespace timeline
