// A series of numbers, kept whole: exact statistics and comparisons need all of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace analysis {

// Statistics of a series; without values all but `count` mean nothing. Percentiles are by nearest rank: the
// smallest value that at least p % of the values do not exceed.
struct Summary {
  std::uint64_t count = 0;
  std::uint64_t min = 0;
  std::uint64_t max = 0;
  double mean = 0;
  double stddev = 0;  // divisor `count`
  std::uint64_t p50 = 0;
  std::uint64_t p95 = 0;
  std::uint64_t p99 = 0;
  std::uint64_t p999 = 0;
  // When the first value of this size was seen, in ticks.
  std::uint64_t minAt = 0;
  std::uint64_t maxAt = 0;
};

// Values in the order in which they came. One takes 4 bytes, from 2^32 - 1 on 12.
class Values {
 public:
  // `at` is kept of the first smallest and the first largest value alone.
  void Add(std::uint64_t value, std::uint64_t at) {
    if (next_ == end_) AddBlock(value, at);
    if (value - min_ > max_ - min_) Widen(value, at);
    if (value >= large) return AddLarge(value);
    *next_++ = static_cast<std::uint32_t>(value);
  }

  std::uint64_t Count() const { return full_ + static_cast<std::uint64_t>(next_ - begin_); }
  std::uint64_t Min() const { return min_; }
  std::uint64_t MinAt() const { return minAt_; }
  std::uint64_t Max() const { return max_; }
  std::uint64_t MaxAt() const { return maxAt_; }
  Summary Summarize() const;
  // By nearest rank, of `percent` above 0 and up to 100; there must be values.
  std::uint64_t Percentile(double percent) const;

  // In order. `use` takes a std::uint64_t.
  template <class Use>
  void ForEach(Use use) const {
    std::size_t nextLarge = 0;
    const bool allSmall = large_.empty();
    for (const Block& block : blocks_) {
      const std::uint32_t* const begin = block.values.get();
      const std::uint32_t* const end = begin == begin_ ? next_ : begin + block.size;
      if (allSmall) {  // the compiler knows then that values have 32 bits
        for (const std::uint32_t* value = begin; value != end; ++value) use(std::uint64_t{*value});
        continue;
      }
      for (const std::uint32_t* value = begin; value != end; ++value)
        use(*value == large ? large_[nextLarge++] : std::uint64_t{*value});
    }
  }

 private:
  static constexpr std::uint32_t large = UINT32_MAX;  // stands for a value in `large_`

  struct Block {
    std::unique_ptr<std::uint32_t[]> values;
    std::size_t size;
  };
  template <class Counter>
  void Measure(Counter& counts, Summary& summary) const;
  template <class Counter>
  void MeasureWide(Counter& counts, Summary& summary) const;
  void AddBlock(std::uint64_t value, std::uint64_t at);
  void AddLarge(std::uint64_t value);
  void Widen(std::uint64_t value, std::uint64_t at);

  // Of the last block.
  std::uint32_t* next_ = nullptr;
  std::uint32_t* end_ = nullptr;
  std::uint64_t min_ = 0;
  std::uint64_t max_ = 0;
  std::uint32_t* begin_ = nullptr;
  std::uint64_t full_ = 0;  // values in the blocks before
  std::uint64_t minAt_ = 0;
  std::uint64_t maxAt_ = 0;
  std::vector<Block> blocks_;
  std::vector<std::uint64_t> large_;
};

}  // namespace analysis
