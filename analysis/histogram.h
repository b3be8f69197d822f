// How values are spread.
#pragma once

#include <cstdint>
#include <vector>

#include "values.h"

namespace analysis {

struct Bin {
  std::uint64_t from;  // included
  std::uint64_t to;    // included
  std::uint64_t count;
};

struct Histogram {
  bool logarithmic = false;  // the bins grow: the values spread over more than two decades
  std::vector<Bin> bins;     // without a hole from the smallest value to the largest; none without values
};

// At most `mostBins` bins, which is at least 1.
Histogram MakeHistogram(const Values& values, std::size_t mostBins);

}  // namespace analysis
