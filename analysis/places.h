// Where the values of a quantity come from.
#pragma once

#include <vector>

#include "histogram.h"
#include "statistics.h"

namespace analysis {

// One value of a quantity: of a job from activation to end, of an interval between its activations, of a run.
struct Place {
  Ticks from;
  Ticks to;
  Ticks value;
};

// All values of one quantity of one task, as Statistics has them. One walk.
Values ValuesOf(const Lane& lane, const Conventions& conventions, TaskIndex task, Quantity quantity);

struct Places {
  std::vector<Place> first;  // in order of time
  std::uint64_t count = 0;   // those behind them, too
};
// Where the values of a bin are, at most the `most` first. One walk.
Places PlacesOf(const Lane& lane, const Conventions& conventions, TaskIndex task, Quantity quantity,
                const Bin& bin, std::size_t most);

}  // namespace analysis
