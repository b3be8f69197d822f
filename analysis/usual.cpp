#include "usual.h"

#include <algorithm>
#include <cmath>

namespace analysis {
namespace {

// Values below this number show no spread.
constexpr std::size_t fewest = 8;
// What happens more often than this is usual, however far out it lies.
constexpr double mostOutliers = 0.1;
// A pattern of every n-th value: so often seen, and with n no larger, it is taken for meant. Something rare
// that happens to come in equal distances is not.
constexpr std::size_t fewestRepeats = 6;
constexpr std::size_t longestPattern = 128;
// A change for good: the sizes before and after differ by this factor, and few values lie on the wrong side.
constexpr double leastChange = 1.25;
constexpr double mostOnWrongSide = 0.03;

// The fewer the values, the further apart two of them may lie by chance.
std::uint64_t RangesApart(std::size_t count) { return count >= 30 ? 1 : count >= 15 ? 2 : 4; }

using Values = std::vector<std::uint64_t>;

// Where the smallest value stands that at least this share of them does not exceed.
Values::iterator PlaceOf(Values& values, double share) {
  const auto rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(values.size())));
  return values.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(rank, 1) - 1);
}

std::uint64_t ValueAt(Values::iterator place, Values::iterator from, Values::iterator to) {
  std::nth_element(from, place, to);
  return *place;
}

// Each is looked for on its side of those before; `values` are reordered.
struct Quantiles {
  explicit Quantiles(Values& values) {
    const auto middle = PlaceOf(values, 0.5);
    median = ValueAt(middle, values.begin(), values.end());
    const auto upper = PlaceOf(values, 0.75);
    threeQuarters = ValueAt(upper, middle, values.end());
    nineTenths = ValueAt(PlaceOf(values, 0.9), upper, values.end());
    const auto lower = PlaceOf(values, 0.25);
    quarter = lower < middle ? ValueAt(lower, values.begin(), middle) : median;
    const auto tenthPlace = PlaceOf(values, 0.1);
    tenth = ValueAt(tenthPlace, values.begin(), lower + 1);
    low = ValueAt(PlaceOf(values, 0.05), values.begin(), tenthPlace + 1);
  }

  std::uint64_t low, tenth, quarter, median, threeQuarters, nineTenths;
};

// `values` are as Quantiles leaves them.
void FindOutliers(Values& values, std::uint64_t leastDistance, Usual& usual) {
  const std::size_t count = values.size();
  const auto most =
      std::max<std::size_t>(1, static_cast<std::size_t>(mostOutliers * static_cast<double>(count)));
  const auto tail = values.begin() + static_cast<std::ptrdiff_t>(count - most - 1);
  std::nth_element(PlaceOf(values, 0.75), tail, values.end());
  std::sort(tail, values.end());
  usual.high = values.back();
  for (std::size_t i = count - most; i < count; ++i) {
    const std::uint64_t range = std::max(values[i - 1] - std::min(values[i - 1], usual.low), leastDistance);
    if (values[i] - values[i - 1] < RangesApart(i) * range) continue;
    usual.high = usual.cut = values[i - 1];
    usual.outliers = count - i;
    return;
  }
}

bool AreRegular(const std::vector<std::uint64_t>& values, const Usual& usual) {
  if (usual.outliers < fewestRepeats) return false;
  std::vector<std::uint64_t> distances;
  std::size_t last = 0;
  bool any = false;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] <= usual.cut) continue;
    if (any) distances.push_back(i - last);
    last = i;
    any = true;
  }
  const std::uint64_t median = Quantile(distances, 0.5);
  const auto fits = [median](std::uint64_t one) { return one + 1 >= median && one <= median + 1; };
  const auto fitting = static_cast<std::size_t>(std::count_if(distances.begin(), distances.end(), fits));
  return median > 1 && median <= longestPattern && fitting * 10 >= distances.size() * 9;
}

// Where values of two sizes stand in two rows, one behind the other.
void FindChange(const std::vector<std::uint64_t>& values, std::uint64_t small, std::uint64_t large,
                Usual& usual) {
  const std::size_t count = values.size();
  if (static_cast<double>(large) < leastChange * static_cast<double>(small) || large <= small + 2) return;
  const std::uint64_t middle = small + (large - small) / 2;
  // The balance of large over small ones is least where they begin to be large, and most where they cease.
  std::int64_t balance = 0, least = 0, most = 0;
  std::size_t leastAt = 0, mostAt = 0;
  for (std::size_t i = 0; i < count; ++i) {
    balance += values[i] > middle ? 1 : -1;
    if (balance < least) leastAt = i + 1;
    if (balance > most) mostAt = i + 1;
    least = std::min(least, balance);
    most = std::max(most, balance);
  }
  const bool rises = balance - 2 * least > 2 * most - balance;
  const std::size_t at = rises ? leastAt : mostAt;
  if (at < fewest || count - at < fewest) return;
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < count; ++i) wrong += (values[i] > middle) != ((i >= at) == rises);
  if (static_cast<double>(wrong) > mostOnWrongSide * static_cast<double>(count)) return;
  const auto split = values.begin() + static_cast<std::ptrdiff_t>(at);
  std::vector<std::uint64_t> before(values.begin(), split);
  std::vector<std::uint64_t> after(split, values.end());
  usual.changedAt = at;
  usual.medianBefore = Quantile(before, 0.5);
  usual.medianAfter = Quantile(after, 0.5);
}

}  // namespace

std::uint64_t Quantile(std::vector<std::uint64_t>& values, double share) {
  return ValueAt(PlaceOf(values, share), values.begin(), values.end());
}

Usual FindUsual(const std::vector<std::uint64_t>& values, double leastShare, std::uint64_t leastDistance) {
  Usual usual;
  usual.count = values.size();
  if (values.empty()) return usual;
  usual.high = usual.most = *std::max_element(values.begin(), values.end());
  if (usual.most == 0) return usual;
  std::vector<std::uint64_t> sorted = values;
  const Quantiles quantiles(sorted);
  usual.low = quantiles.low;
  usual.quarter = quantiles.quarter;
  usual.median = quantiles.median;
  usual.threeQuarters = quantiles.threeQuarters;
  if (values.size() < fewest) return usual;
  const auto share = static_cast<std::uint64_t>(leastShare * static_cast<double>(usual.median));
  FindOutliers(sorted, std::max(leastDistance, share), usual);
  usual.isRegular = AreRegular(values, usual);
  if (values.size() >= 2 * fewest) FindChange(values, quantiles.tenth, quantiles.nineTenths, usual);
  return usual;
}

Usual Against(const Usual& good, const Usual& other, double leastShare) {
  Usual usual = good;
  const auto least = static_cast<std::uint64_t>(leastShare * static_cast<double>(good.median));
  usual.cut = good.most + std::max({good.most - good.low, least, std::uint64_t{2}});
  usual.isRegular = false;
  usual.changedAt = other.changedAt;
  usual.medianBefore = other.medianBefore;
  usual.medianAfter = other.medianAfter;
  if (other.median <= usual.cut) return usual;
  usual.changedAt = 0;
  usual.medianBefore = good.median;
  usual.medianAfter = other.median;
  return usual;
}

}  // namespace analysis
