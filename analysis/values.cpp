#include "values.h"

#include <algorithm>
#include <cmath>

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

// A whole number of 128 bits.
struct Wide {
  std::uint64_t high = 0;
  std::uint64_t low = 0;

  static Wide Product(std::uint64_t a, std::uint64_t b) {
    constexpr std::uint64_t half = UINT32_MAX;
    const std::uint64_t lowest = (a & half) * (b & half);
    const std::uint64_t middle = (a >> 32) * (b & half) + (lowest >> 32);
    const std::uint64_t other = (a & half) * (b >> 32) + (middle & half);
    return {(a >> 32) * (b >> 32) + (middle >> 32) + (other >> 32), other << 32 | (lowest & half)};
  }
  void Add(std::uint64_t value) {
    low += value;
    high += low < value;
  }
  void Subtract(const Wide& other) {
    high -= other.high + (low < other.low);
    low -= other.low;
  }
  double Value() const { return static_cast<double>(high) * 0x1p64 + static_cast<double>(low); }
};

// Counts values by stretches of a range, all equally long.
class Counts {
 public:
  // For about `count` values.
  Counts(std::uint64_t low, std::uint64_t high, std::uint64_t count) : low_(low), span_(high - low) {
    shift_ = std::max(Width(span_) - std::min(Width(count), mostBits), 0);
    counts_.resize(static_cast<std::size_t>(span_ >> shift_) + 1);
  }

  void Add(std::uint64_t value) {
    if (value - low_ <= span_) ++counts_[PlaceOf(value)];
  }

  // A stretch, and how many values lie before it.
  struct Stretch {
    std::uint64_t low;
    std::uint64_t high;
    std::uint64_t count;
    std::uint64_t below;
  };
  // The stretch that holds the value of a rank, from 1, among those counted. Ranks are asked for in order.
  Stretch Find(std::uint64_t rank) {
    while (rank > below_ + counts_[found_]) below_ += counts_[found_++];
    const std::uint64_t low = low_ + (std::uint64_t{found_} << shift_);
    const std::uint64_t rest = span_ - (low - low_);
    return {low, low + std::min(rest, (std::uint64_t{1} << shift_) - 1), counts_[found_], below_};
  }

  // Marks a stretch; of a value, whether its stretch is marked.
  void Mark(const Stretch& stretch) {
    if (marks_.empty()) marks_.resize(counts_.size());
    marks_[PlaceOf(stretch.low)] = 1;
  }
  bool HasMarks() const { return !marks_.empty(); }
  bool IsMarked(std::uint64_t value) const { return marks_[PlaceOf(value)] != 0; }

 private:
  static constexpr int mostBits = 12;  // few enough counts to stay in a cache

  static int Width(std::uint64_t value) {
    int width = 0;
    for (; value > 0; value >>= 1) ++width;
    return width;
  }

  std::size_t PlaceOf(std::uint64_t value) const {
    return static_cast<std::size_t>((value - low_) >> shift_);
  }

  std::uint64_t low_;
  std::uint64_t span_;
  int shift_;
  std::vector<std::uint32_t> counts_;
  std::vector<std::uint8_t> marks_;
  std::size_t found_ = 0;
  std::uint64_t below_ = 0;  // values before that
};

// Looks for the value of one rank, which lies in a stretch: gathers what lies there, if it is little.
struct Wanted {
  std::uint64_t rank;
  Counts::Stretch stretch;
  std::vector<std::uint64_t> gathered = {};

  static constexpr std::uint64_t few = 1024;

  bool IsFound() const { return stretch.low == stretch.high; }
  bool Gathers() const { return !IsFound() && stretch.count <= few; }
  void Take(std::uint64_t value) {
    if (value - stretch.low <= stretch.high - stretch.low) gathered.push_back(value);
  }
  void Choose() {
    const auto place = gathered.begin() + static_cast<std::ptrdiff_t>(rank - stretch.below - 1);
    std::nth_element(gathered.begin(), place, gathered.end());
    stretch.low = stretch.high = *place;
  }
};

// Nothing is sorted or moved: each round counts the values of the stretch by smaller ones.
void Narrow(const Values& values, Wanted& wanted) {
  while (!wanted.IsFound()) {
    Counts::Stretch& stretch = wanted.stretch;
    if (wanted.Gathers()) {
      values.ForEach([&](std::uint64_t value) { wanted.Take(value); });
      return wanted.Choose();
    }
    Counts counts(stretch.low, stretch.high, stretch.count);
    values.ForEach([&](std::uint64_t value) { counts.Add(value); });
    const std::uint64_t below = stretch.below;
    stretch = counts.Find(wanted.rank - below);
    stretch.below += below;
  }
}

}  // namespace

// Mean and standard deviation, and counts, in one pass. What is summed are the distances from the smallest
// value: their squares fill at most 96 bits, and all is exact but for one division and one root.
template <class Counter>
void Values::Measure(Counter& counts, Summary& summary) const {
  std::uint64_t sum = 0;
  Wide squares;
  ForEach([&, low = min_](std::uint64_t value) {
    const std::uint64_t distance = value - low;
    sum += distance;
    squares.Add(distance * distance);
    counts.Add(value);
  });
  const auto count = static_cast<double>(summary.count);
  Wide total = Wide::Product(min_, summary.count);
  total.Add(sum);
  summary.mean = total.Value() / count;
  Wide spread = Wide::Product(squares.low, summary.count);
  spread.high += squares.high * summary.count;
  spread.Subtract(Wide::Product(sum, sum));
  summary.stddev = std::sqrt(spread.Value()) / count;
}

// The same for values of any size, in two passes.
template <class Counter>
void Values::MeasureWide(Counter& counts, Summary& summary) const {
  Wide sum;
  ForEach([&](std::uint64_t value) {
    sum.Add(value);
    counts.Add(value);
  });
  const auto count = static_cast<double>(summary.count);
  summary.mean = sum.Value() / count;
  double squares = 0;
  ForEach([&squares, mean = summary.mean](std::uint64_t value) {
    const double distance = static_cast<double>(value) - mean;
    squares += distance * distance;
  });
  summary.stddev = std::sqrt(squares / count);
}

// Each is twice as long as the one before, up to a limit: little room is left unused.
void Values::AddBlock(std::uint64_t value, std::uint64_t at) {
  if (blocks_.empty()) {
    min_ = max_ = value;
    minAt_ = maxAt_ = at;
  }
  full_ = Count();
  const std::size_t size = blocks_.empty() ? firstBlock : std::min(2 * blocks_.back().size, largestBlock);
  blocks_.push_back({std::unique_ptr<std::uint32_t[]>(new std::uint32_t[size]), size});
  next_ = begin_ = blocks_.back().values.get();
  end_ = next_ + size;
}

void Values::AddLarge(std::uint64_t value) {
  large_.push_back(value);
  *next_++ = large;
}

void Values::Widen(std::uint64_t value, std::uint64_t at) {
  (value < min_ ? min_ : max_) = value;
  (value == min_ ? minAt_ : maxAt_) = at;
}

Summary Values::Summarize() const {
  Summary summary;
  summary.count = Count();
  if (summary.count == 0) return summary;
  summary.min = min_;
  summary.max = max_;
  summary.minAt = minAt_;
  summary.maxAt = maxAt_;
  if (min_ == max_) {
    summary.mean = static_cast<double>(min_);
    summary.p50 = summary.p95 = summary.p99 = summary.p999 = min_;
    return summary;
  }
  Counts counts(min_, max_, summary.count);
  if (max_ - min_ <= UINT32_MAX && summary.count <= UINT32_MAX)
    Measure(counts, summary);
  else
    MeasureWide(counts, summary);

  std::vector<Wanted> wanted;
  for (const std::uint64_t millionths : {50'000'000, 95'000'000, 99'000'000, 99'900'000}) {
    const std::uint64_t rank = RankOf(summary.count, millionths);
    wanted.push_back({rank, counts.Find(rank)});
  }
  for (const Wanted& one : wanted)
    if (one.Gathers()) counts.Mark(one.stretch);
  if (counts.HasMarks()) {
    ForEach([&](std::uint64_t value) {
      if (!counts.IsMarked(value)) return;
      for (Wanted& one : wanted)
        if (one.Gathers()) one.Take(value);
    });
  }
  std::uint64_t* const results[] = {&summary.p50, &summary.p95, &summary.p99, &summary.p999};
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (wanted[i].Gathers()) wanted[i].Choose();
    Narrow(*this, wanted[i]);
    *results[i] = wanted[i].stretch.low;
  }
  return summary;
}

std::uint64_t Values::Percentile(double percent) const {
  const std::uint64_t rank = RankOf(Count(), static_cast<std::uint64_t>(std::llround(percent * 1e6)));
  Wanted wanted{rank, {min_, max_, Count(), 0}};
  Narrow(*this, wanted);
  return wanted.stretch.low;
}

}  // namespace analysis
