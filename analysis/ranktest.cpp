// Whether two series differ by more than noise.
#include <algorithm>
#include <cmath>

#include "comparison.h"

namespace analysis {
namespace {

constexpr double noiseLimit = 5;           // standard errors: many tests are made at once
constexpr std::size_t fewest = 20;         // values that show a range
constexpr std::size_t mostStretches = 32;  // of a series, for its error

using Series = std::vector<const Values*>;

std::uint64_t CountOf(const Series& series) {
  std::uint64_t count = 0;
  for (const Values* values : series) count += values->Count();
  return count;
}

std::vector<std::uint64_t> Sorted(const Series& series) {
  std::vector<std::uint64_t> all;
  all.reserve(static_cast<std::size_t>(CountOf(series)));
  for (const Values* values : series) values->ForEach([&](std::uint64_t value) { all.push_back(value); });
  std::sort(all.begin(), all.end());
  return all;
}

struct Estimate {
  double mean = 0;
  double variance = 0;  // of the mean
};

// The mean of what `score` gives for each value. Stretches are long enough that their means hardly depend on
// each other; a short series has stretches of one value.
template <class Score>
Estimate MeanScore(const Series& series, Score score) {
  std::vector<double> means;
  double sum = 0;
  for (const Values* values : series) {
    const std::uint64_t length = values->Count() / mostStretches + 1;
    std::uint64_t inStretch = 0;
    double stretch = 0;
    values->ForEach([&](std::uint64_t value) {
      const double one = score(value);
      sum += one;
      stretch += one;
      if (++inStretch < length) return;
      means.push_back(stretch / static_cast<double>(length));
      inStretch = 0;
      stretch = 0;
    });
  }
  Estimate estimate{sum / static_cast<double>(CountOf(series)), 0};
  if (means.size() < 2) return estimate;
  double squares = 0;
  for (const double mean : means) squares += (mean - estimate.mean) * (mean - estimate.mean);
  const auto count = static_cast<double>(means.size());
  estimate.variance = squares / (count - 1) / count;
  return estimate;
}

// How many standard errors two means differ. The error is at least that of independent values of which one
// has the variance `single`.
double Errors(const Estimate& before, const Estimate& after, double single, const Series& first,
              const Series& second) {
  const double difference = after.mean - before.mean;
  const double least =
      single / static_cast<double>(CountOf(first)) + single / static_cast<double>(CountOf(second));
  const double variance = std::max(before.variance + after.variance, least);
  return variance > 0 ? difference / std::sqrt(variance) : 0;
}

// The share of `sorted` below a value, equal ones counted by half.
double ShareBelow(const std::vector<std::uint64_t>& sorted, std::uint64_t value) {
  const auto [low, high] = std::equal_range(sorted.begin(), sorted.end(), value);
  const auto below = static_cast<double>((low - sorted.begin()) + (high - sorted.begin())) / 2;
  return below / static_cast<double>(sorted.size());
}

// Of how many values of `sorted` it can be said that the other side never comes near them.
std::uint64_t CountFarOutside(const std::vector<std::uint64_t>& sorted,
                              const std::vector<std::uint64_t>& other) {
  if (other.size() < fewest) return 0;
  const std::uint64_t range = other.back() - other.front();
  const std::uint64_t room = std::max<std::uint64_t>({range, other.back() / 50, 3});
  const std::uint64_t low = other.front() - std::min(room, other.front());
  const std::uint64_t high = other.back() + std::min(room, UINT64_MAX - other.back());
  const auto inside = std::lower_bound(sorted.begin(), sorted.end(), low);
  const auto beyond = std::upper_bound(inside, sorted.end(), high);
  return static_cast<std::uint64_t>((inside - sorted.begin()) + (sorted.end() - beyond));
}

// Compares the shares of values beyond 99 % of all.
double TailDifference(const Series& before, const Series& after,
                      const std::vector<std::uint64_t>& sortedBefore,
                      const std::vector<std::uint64_t>& sortedAfter) {
  std::vector<std::uint64_t> all(sortedBefore.size() + sortedAfter.size());
  std::merge(sortedBefore.begin(), sortedBefore.end(), sortedAfter.begin(), sortedAfter.end(), all.begin());
  const std::uint64_t limit = all[all.size() - 1 - all.size() / 100];
  const auto isBeyond = [limit](std::uint64_t value) { return value > limit ? 1.0 : 0.0; };
  const auto beyond = static_cast<double>(all.end() - std::upper_bound(all.begin(), all.end(), limit));
  const double share = beyond / static_cast<double>(all.size());
  return Errors(MeanScore(before, isBeyond), MeanScore(after, isBeyond), share * (1 - share), before, after);
}

}  // namespace

bool RankTest::IsNoise() const {
  return std::abs(z) < noiseLimit && std::abs(tailZ) < noiseLimit && outliers == 0;
}

double RankTest::Strength() const { return std::max(std::abs(z), std::abs(tailZ)); }

RankTest CompareRanks(const Series& before, const Series& after) {
  RankTest test;
  if (CountOf(before) == 0 || CountOf(after) == 0) return test;
  const std::vector<std::uint64_t> sortedBefore = Sorted(before);
  const std::vector<std::uint64_t> sortedAfter = Sorted(after);
  const auto inAfter = [&](std::uint64_t value) { return ShareBelow(sortedAfter, value); };
  const auto inBefore = [&](std::uint64_t value) { return ShareBelow(sortedBefore, value); };
  // The two places of a pair add up to 1, so both means say the same, each with the error of its own series.
  const Estimate placesAfter = MeanScore(after, inBefore);
  test.superiority = placesAfter.mean;
  test.z = Errors({0.5, MeanScore(before, inAfter).variance}, placesAfter, 1.0 / 12, before, after);
  test.tailZ = TailDifference(before, after, sortedBefore, sortedAfter);
  test.outliers = CountFarOutside(sortedAfter, sortedBefore) + CountFarOutside(sortedBefore, sortedAfter);
  return test;
}

}  // namespace analysis
