// What lies at a place of a picture.
#pragma once

#include "marks.h"
#include "rows.h"

namespace timeline {

enum class HitKind : std::uint8_t { nothing, run, wait, job, unknown, gap, event, testpoint, issue };

struct Hit {
  HitKind kind = HitKind::nothing;
  TaskIndex task = analysis::noTask;  // whose run, wait, job or event; who ran at a testpoint or issue
  std::size_t index = 0;              // in its spans, gaps or marks: those of the row
  std::size_t count = 1;              // marks that are shown as one
  Ticks begin = 0;
  Ticks end = 0;  // of a mark as `begin`
};

// `x` counts from the left end of the window, `y` from the top of the row. What is narrower than a pixel is
// found within two pixels, marks within as much as they are wide. Time: the logarithm of spans and marks; on
// the row of a lane, times the tasks.
Hit HitAt(const Tracks& tracks, const PlacedRow& row, const Window& window, double x, double y);

// How many pixels wide marks are drawn, and so what of them is one.
inline constexpr std::uint32_t markWidth = 8;
inline constexpr std::uint32_t testpointWidth = 3;

}  // namespace timeline
