// What is usual in a series of values, what lies outside of it, and whether it changed for good.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace analysis {

// Values above `cut` are outliers: few, and further from all others than those are from each other. Several
// modes are usual as long as none of them is rare.
struct Usual {
  std::uint64_t count = 0;
  std::uint64_t low = 0;  // 5 % of the values do not exceed it
  std::uint64_t quarter = 0;
  std::uint64_t median = 0;
  std::uint64_t threeQuarters = 0;
  std::uint64_t high = 0;  // the largest that is no outlier
  std::uint64_t most = 0;
  std::uint64_t cut = UINT64_MAX;
  std::uint64_t outliers = 0;
  // The outliers come in every n-th place, often enough to be meant so.
  bool isRegular = false;
  // Since this place all values are of another size.
  std::optional<std::size_t> changedAt;
  std::uint64_t medianBefore = 0;
  std::uint64_t medianAfter = 0;

  bool IsHigh(std::uint64_t value) const { return value > cut && !isRegular; }
};

// `values` are in order of time. What is nearer to the others than this share of the median, or than
// `leastDistance`, is no outlier. Time: some passes, and sorting a tenth of the values.
Usual FindUsual(const std::vector<std::uint64_t>& values, double leastShare, std::uint64_t leastDistance = 2);

// What is usual by a good series, where another one is looked at: every value is an outlier that is further
// beyond all good ones than those are from each other. Changes are those of the other.
Usual Against(const Usual& good, const Usual& other, double leastShare);

// Of the values, which are reordered; there must be some. The smallest that at least this share does not
// exceed.
std::uint64_t Quantile(std::vector<std::uint64_t>& values, double share);

}  // namespace analysis
