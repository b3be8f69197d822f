// Schedules made up at random: tasks that are woken, run, wait and end, and now and then nonsense.
#pragma once

#include <gtest/gtest.h>

#include <random>

#include "analysis/lane.h"
#include "support/logs.h"

inline constexpr std::uint32_t idleId = 1;
inline constexpr std::uint32_t taskCount = 5;  // with ids 2 and so on

class RandomSchedule {
 public:
  explicit RandomSchedule(unsigned seed) : random_(seed) {}

  unsigned Below(unsigned bound) { return static_cast<unsigned>(random_() % bound); }

  // Tasks that are woken, run, wait, use up slices and end, some records in one tick; now and then nonsense.
  std::vector<RingRecord> Records(unsigned count, bool withNonsense) {
    std::vector<RingRecord> records;
    std::uint64_t time = 1000;
    std::vector<std::uint32_t> stack{idleId};
    while (records.size() < count) {
      time += Below(3) == 0 ? 0 : Below(4);
      const std::uint32_t task = 2 + Below(taskCount);
      const unsigned lot = Below(withNonsense ? 12 : 10);
      if (lot < 2) {
        records.push_back({2, time, task});
      } else if (lot < 5) {
        stack.push_back(task);
        records.push_back({stack.size() == 2 ? 3u : Below(2) * 5, time, task});
      } else if (lot < 9) {
        if (stack.size() > 1) stack.pop_back();
        records.push_back({lot == 8 ? 4u : 1u, time, stack.back()});
      } else if (lot < 10) {
        records.push_back({6, time, 0x9000});
      } else {
        records.push_back({Below(8), time, 1 + Below(taskCount + 2)});
      }
    }
    return records;
  }

  std::vector<analysis::Gap> Gaps(const tasklog::Log& log, unsigned count) {
    std::vector<analysis::Gap> gaps;
    const auto length = static_cast<unsigned>(log.StopTime() - log.StartTime()) + 1;
    for (unsigned i = 0; i < count; ++i) {
      const analysis::Ticks from = log.StartTime() + Below(length);
      gaps.push_back({from, from + Below(12)});
    }
    return gaps;
  }

 private:
  std::mt19937 random_;
};

// Into an empty log.
inline void Load(tasklog::Log& log, RandomSchedule& random) {
  ScriptedTarget target;
  PutCategories(target);
  target.tasks = {{idleId, "Idle", 0, 0}};
  for (std::uint32_t task = 0; task < taskCount; ++task)
    target.tasks.push_back({2 + task, "Task" + std::to_string(task), 0, random.Below(4) << 16});
  const auto records = random.Records(2 + random.Below(60), random.Below(3) == 0);
  ASSERT_EQ(AppendRing(log.Handle(), target, RingWords(1000, records)), 0u);
}
