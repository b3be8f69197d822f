#include "histogram.h"

#include <algorithm>
#include <cmath>

namespace analysis {
namespace {

// The first value of each bin.
std::vector<std::uint64_t> LinearEdges(std::uint64_t min, std::uint64_t max, std::size_t mostBins) {
  if (mostBins < 2) return {min};
  const std::uint64_t width = (max - min) / mostBins + 1;
  std::vector<std::uint64_t> edges;
  for (std::uint64_t offset = 0; offset <= max - min; offset += width) {
    edges.push_back(min + offset);
    if (width > max - min - offset) break;
  }
  return edges;
}

std::vector<std::uint64_t> LogarithmicEdges(std::uint64_t min, std::uint64_t max, std::size_t mostBins) {
  const double from = std::log(static_cast<double>(std::max<std::uint64_t>(min, 1)));
  const double step = (std::log(static_cast<double>(max)) - from) / static_cast<double>(mostBins);
  std::vector<std::uint64_t> edges{min};
  for (std::size_t i = 1; i < mostBins; ++i) {
    const auto edge = static_cast<std::uint64_t>(std::ceil(std::exp(from + step * static_cast<double>(i))));
    if (edge > edges.back() && edge <= max) edges.push_back(edge);
  }
  return edges;
}

}  // namespace

Histogram MakeHistogram(const Values& values, std::size_t mostBins) {
  Histogram histogram;
  if (values.Count() == 0) return histogram;
  const std::uint64_t min = values.Min();
  const std::uint64_t max = values.Max();
  histogram.logarithmic = max / std::max<std::uint64_t>(min, 1) >= 100;
  const auto edges =
      histogram.logarithmic ? LogarithmicEdges(min, max, mostBins) : LinearEdges(min, max, mostBins);
  for (std::size_t i = 0; i < edges.size(); ++i)
    histogram.bins.push_back({edges[i], i + 1 < edges.size() ? edges[i + 1] - 1 : max, 0});
  values.ForEach([&](std::uint64_t value) {
    const auto behind = std::upper_bound(edges.begin(), edges.end(), value);
    ++histogram.bins[static_cast<std::size_t>(behind - edges.begin()) - 1].count;
  });
  return histogram;
}

}  // namespace analysis
