#include "values.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace analysis {
namespace {

constexpr std::size_t firstBlock = 16;
constexpr std::size_t largestBlock = 4096;

// The rank, from 1, of what at least `millionths` of a percent of `count` values do not exceed.
std::uint64_t RankOf(std::uint64_t count, std::uint64_t millionths) {
  constexpr std::uint64_t whole = 100'000'000;
  return std::max<std::uint64_t>(
      1, count / whole * millionths + (count % whole * millionths + whole - 1) / whole);
}

// A value looked for by its rank, from 1, in the sorted series.
struct Wanted {
  std::uint64_t rank;
  std::uint64_t value;
};

// Finds values by rank without sorting or moving the series: values are counted in stretches of their range,
// then the stretches that hold what is wanted are looked at in the same way, until few values are left.
class RankSearch {
 public:
  RankSearch(const Values& values, std::vector<Wanted>& wanted) : values_(values), wanted_(wanted) {}

  // Looks among the `count` values from `low` to `high`, of which `below` are smaller, for those wanted from
  // `first` on, up to `last`.
  void Find(std::uint64_t low, std::uint64_t high, std::uint64_t count, std::uint64_t below,
            std::size_t first, std::size_t last) {
    if (low == high) {
      for (std::size_t i = first; i < last; ++i) wanted_[i].value = low;
    } else if (count <= few) {
      Sort(low, high, below, first, last);
    } else {
      Divide(low, high, count, below, first, last);
    }
  }

 private:
  static constexpr std::size_t few = 64;

  void Sort(std::uint64_t low, std::uint64_t high, std::uint64_t below, std::size_t first, std::size_t last) {
    std::vector<std::uint64_t> found;
    values_.ForEach([&](std::uint64_t value) {
      if (value - low <= high - low) found.push_back(value);
    });
    std::sort(found.begin(), found.end());
    for (std::size_t i = first; i < last; ++i)
      wanted_[i].value = found[static_cast<std::size_t>(wanted_[i].rank - below - 1)];
  }

  void Divide(std::uint64_t low, std::uint64_t high, std::uint64_t count, std::uint64_t below,
              std::size_t first, std::size_t last) {
    const int bits = std::min(Width(count), 12);
    const int shift = std::max(Width(high - low) - bits, 0);
    std::vector<std::uint32_t> counts((static_cast<std::size_t>((high - low) >> shift)) + 1);
    values_.ForEach([&](std::uint64_t value) {
      if (value - low <= high - low) ++counts[static_cast<std::size_t>((value - low) >> shift)];
    });
    for (std::size_t i = 0; first < last; below += counts[i++]) {
      std::size_t next = first;
      while (next < last && wanted_[next].rank <= below + counts[i]) ++next;
      if (next == first) continue;
      const std::uint64_t from = low + (std::uint64_t{i} << shift);
      const std::uint64_t to = std::min(high, from + ((std::uint64_t{1} << shift) - 1));
      Find(from, to, counts[i], below, first, next);
      first = next;
    }
  }

  static int Width(std::uint64_t value) {
    int width = 0;
    for (; value > 0; value >>= 1) ++width;
    return width;
  }

  const Values& values_;
  std::vector<Wanted>& wanted_;
};

// Exact, as 128 bits.
struct Sum {
  std::uint64_t high = 0;
  std::uint64_t low = 0;
  void Add(std::uint64_t value) {
    low += value;
    high += low < value;
  }
  double Value() const { return static_cast<double>(high) * 0x1p64 + static_cast<double>(low); }
};

}  // namespace

void Values::AddBlock() {
  const std::size_t size = blocks_.empty() ? firstBlock : std::min(2 * blocks_.back().size, largestBlock);
  blocks_.push_back({std::unique_ptr<std::uint32_t[]>(new std::uint32_t[size]), size});
  next_ = blocks_.back().values.get();
  end_ = next_ + size;
}

Summary Values::Summarize() const {
  Summary summary;
  summary.count = count_;
  if (count_ == 0) return summary;
  Sum sum;
  ForEach([&](std::uint64_t value) { sum.Add(value); });
  summary.min = min_;
  summary.minAt = minAt_;
  summary.max = max_;
  summary.maxAt = maxAt_;
  const auto count = static_cast<double>(count_);
  summary.mean = sum.Value() / count;
  double squares = 0;
  ForEach([&](std::uint64_t value) {
    const double distance = static_cast<double>(value) - summary.mean;
    squares += distance * distance;
  });
  summary.stddev = std::sqrt(squares / count);
  std::vector<Wanted> wanted;
  for (const std::uint64_t millionths : {50'000'000, 95'000'000, 99'000'000, 99'900'000})
    wanted.push_back({RankOf(count_, millionths), 0});
  RankSearch(*this, wanted).Find(summary.min, max_, count_, 0, 0, wanted.size());
  summary.p50 = wanted[0].value;
  summary.p95 = wanted[1].value;
  summary.p99 = wanted[2].value;
  summary.p999 = wanted[3].value;
  return summary;
}

std::uint64_t Values::Percentile(double percent) const {
  std::vector<Wanted> wanted{{RankOf(count_, static_cast<std::uint64_t>(std::llround(percent * 1e6))), 0}};
  RankSearch(*this, wanted).Find(min_, max_, count_, 0, 0, 1);
  return wanted[0].value;
}

std::vector<std::uint64_t> Values::Sorted() const {
  std::vector<std::uint64_t> sorted;
  sorted.reserve(static_cast<std::size_t>(count_));
  ForEach([&](std::uint64_t value) { sorted.push_back(value); });
  std::sort(sorted.begin(), sorted.end());
  return sorted;
}

}  // namespace analysis
