// Blocks between sizes small and large, with memory and without.
#include "model/block.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "model/growingarray.h"
#include "model/pages.h"
#include "support/allocations.h"

namespace {

// Words that tell their places, as far as a block holds some.
void Fill(const Block& block) {
  auto* words = static_cast<unsigned*>(block.Data());
  std::iota(words, words + block.SizeBytes() / sizeof *words, 0u);
}

bool IsFilled(const Block& block, std::size_t sizeBytes) {
  const auto* words = static_cast<const unsigned*>(block.Data());
  for (std::size_t i = 0; i < sizeBytes / sizeof *words; ++i)
    if (words[i] != i) return false;
  return true;
}

constexpr std::size_t page = largePageSize;

// Changes the size of a block, with the content, while one allocation fails, alone or with all behind it.
// False when there are no more to fail.
bool ResizeOnce(std::size_t from, std::size_t to, std::size_t failing, bool exhausted) {
  Block block;
  EXPECT_TRUE(block.Resize(from));
  Fill(block);
  const std::size_t before = block.SizeBytes();
  bool resized = false;
  bool failed = false;
  {
    const AllocationWatch watch(failing, exhausted);
    resized = block.Resize(to);
    failed = watch.Failed();
  }
  EXPECT_TRUE(resized || failed);
  EXPECT_TRUE(resized ? block.SizeBytes() >= to : block.SizeBytes() == before);
  EXPECT_TRUE(IsFilled(block, resized ? std::min(before, to) : before));
  Fill(block);
  return failed;
}

TEST(Block, KeepsItsContentOrStaysAsItWas) {
  constexpr std::size_t sizes[] = {0, 64, page, 2 * page - 8, 2 * page, 3 * page + 8, 9 * page};
  for (const std::size_t from : sizes)
    for (const std::size_t to : sizes)
      for (const bool exhausted : {false, true}) {
        std::size_t failing = 1;
        const std::size_t live = LiveAllocations();
        while (ResizeOnce(from, to, failing, exhausted)) ++failing;
        EXPECT_EQ(LiveAllocations(), live);
        ASSERT_FALSE(HasFailure()) << from << " to " << to << ", allocation " << failing;
      }
  Block block;
  EXPECT_FALSE(block.Resize(SIZE_MAX));
  EXPECT_THROW(GrowingArray<std::size_t>().Spare(SIZE_MAX / sizeof(std::size_t)), std::bad_alloc);
  EXPECT_EQ(block.SizeBytes(), 0u);
}

}  // namespace
