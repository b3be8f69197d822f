// The search by time against the standard library's.
#include "model/timeindex.h"

#include <gtest/gtest.h>

namespace {

// Appends in steps that end before, at and behind the sizes at which a level is added, a few entries of each
// time.
TEST(TimeIndex, FindsTheBoundsOfEveryTimeWhateverTheSizesOfTheAppends) {
  for (const std::size_t step : {std::size_t{1}, std::size_t{16}, std::size_t{255}, std::size_t{256}}) {
    EntryArray entries;
    TimeIndex index;
    while (entries.size() < 600) {
      const std::size_t held = entries.size();
      _STLEntry* fresh = entries.Spare(step);
      for (std::size_t i = 0; i < step; ++i) fresh[i] = _STLEntry(TLLogSwitch0, 10 + (held + i) / 3);
      index.Reserve(held + step);
      entries.Extend(step);
      index.Update(entries, held);
    }
    for (u64 time = 9; time <= entries.back().timestamp + 1; ++time) {
      const auto [lower, upper] =
          std::equal_range(entries.begin(), entries.end(), time, CompareEntriesByTime());
      const auto first = static_cast<std::size_t>(lower - entries.begin());
      ASSERT_EQ(index.LowerBound(entries, time), first) << step << " at a time, time " << time;
      ASSERT_EQ(index.UpperBound(entries, time, 0), static_cast<std::size_t>(upper - entries.begin()));
      ASSERT_EQ(index.UpperBound(entries, time, entries.size() - 1),
                entries.size() - 1 + (upper == entries.end()));
    }
  }
}

}  // namespace
