// Arrays that grow from small blocks into large ones.
#include "model/growingarray.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdint>
#include <fstream>

namespace {

using Numbers = GrowingArray<std::uint64_t>;
constexpr std::size_t manyNumbers = 4 * largePageSize / sizeof(std::uint64_t);

void AppendUpTo(Numbers& numbers, std::size_t count) {
  while (numbers.size() < count) {
    *numbers.Spare(1) = numbers.size();
    numbers.Extend(1);
  }
}

// How many numbers are not as AppendUpTo left them.
std::size_t WrongNumbers(const Numbers& numbers) {
  std::size_t wrong = 0;
  for (std::size_t i = 0; i < numbers.size(); ++i) wrong += numbers[i] != i;
  return wrong;
}

// Lets the process have this much more address space, as long as it lives.
class AddressSpaceLimit {
 public:
  explicit AddressSpaceLimit(rlim_t more) {
    getrlimit(RLIMIT_AS, &before_);
    rlim_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const rlimit limit{pages * 4096 + more, before_.rlim_max};
    setrlimit(RLIMIT_AS, &limit);
  }
  ~AddressSpaceLimit() { setrlimit(RLIMIT_AS, &before_); }

 private:
  rlimit before_ = {};
};

TEST(GrowingArray, KeepsItsValuesWhileItsBlockGrowsMovesAndShrinks) {
  Numbers first;
  Numbers second;  // grows in turn with the first, so that each is in the other's way
  for (std::size_t count = 1000; count < manyNumbers; count += count) {
    AppendUpTo(first, count);
    AppendUpTo(second, count);
  }
  first.Spare(manyNumbers);
  first.TrimSpare();
  EXPECT_LE(first.SpareSize(), first.size() / 2 + largePageSize);
  EXPECT_EQ(WrongNumbers(first), 0u);
  EXPECT_EQ(WrongNumbers(second), 0u);
}

TEST(GrowingArray, StaysAsItWasWhenThereIsNoAddressSpaceToGrowInto) {
  for (const std::size_t count : {std::size_t{10}, manyNumbers}) {
    Numbers numbers;
    AppendUpTo(numbers, count);
    {
      const AddressSpaceLimit limit(largePageSize);
      EXPECT_THROW(numbers.Spare(16 * manyNumbers), std::bad_alloc);
    }
    EXPECT_THROW(numbers.Spare(SIZE_MAX / 32), std::bad_alloc);
    EXPECT_EQ(numbers.size(), count);
    AppendUpTo(numbers, 2 * count);
    EXPECT_EQ(WrongNumbers(numbers), 0u);
  }
}

}  // namespace
