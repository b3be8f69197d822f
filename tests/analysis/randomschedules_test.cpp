// The walk against the plain second computation, on random schedules.
#include <gtest/gtest.h>

#include <random>

#include "analysis/follower.h"
#include "analysis/statistics.h"
#include "analysis/walker.h"
#include "support/logs.h"
#include "tests/analysis/plainwalk.h"

using namespace analysis;

namespace {

constexpr std::uint32_t idleId = 1;
constexpr std::uint32_t taskCount = 5;  // with ids 2 and so on

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

  std::vector<Gap> Gaps(const tasklog::Log& log, unsigned count) {
    std::vector<Gap> gaps;
    const auto length = static_cast<unsigned>(log.StopTime() - log.StartTime()) + 1;
    for (unsigned i = 0; i < count; ++i) {
      const Ticks from = log.StartTime() + Below(length);
      gaps.push_back({from, from + Below(12)});
    }
    return gaps;
  }

 private:
  std::mt19937 random_;
};

void Load(tasklog::Log& log, RandomSchedule& random) {
  ScriptedTarget target;
  PutCategories(target);
  target.tasks = {{idleId, "Idle", 0, 0}};
  for (std::uint32_t task = 0; task < taskCount; ++task)
    target.tasks.push_back({2 + task, "Task" + std::to_string(task), 0, random.Below(4) << 16});
  const auto records = random.Records(2 + random.Below(60), random.Below(3) == 0);
  ASSERT_EQ(AppendRing(log.Handle(), target, RingWords(1000, records)), 0u);
}

std::string Differences(const Account& walked, const Account& plain) {
  std::string text;
  for (const std::string& line : walked)
    if (walked.count(line) != plain.count(line)) text += "walk:  " + line + '\n';
  for (const std::string& line : plain)
    if (walked.count(line) != plain.count(line)) text += "plain: " + line + '\n';
  return text;
}

// The second log begins with the last switch before the end of the first, or earlier.
TEST(RandomSchedules, MeanTheSameInSegments) {
  for (unsigned seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    RandomSchedule random(seed);
    const std::vector<RingRecord> records = random.Records(80, false);
    const std::size_t end = 30 + random.Below(40);
    std::size_t begin = random.Below(30);
    while (begin > 0 && (records[begin].type == 2 || records[begin].type > 5)) --begin;
    if (records[begin].tick == records[0].tick) begin = 0;
    ScriptedTarget target;
    PutCategories(target);
    tasklog::Log whole, first, second;
    ASSERT_EQ(AppendRing(whole.Handle(), target, RingWords(1000, records)), 0u);
    ASSERT_EQ(AppendRing(first.Handle(), target, RingWords(1000, {records.begin(), records.begin() + end})),
              0u);
    ASSERT_EQ(AppendRing(second.Handle(), target, RingWords(1000, {records.begin() + begin, records.end()})),
              0u);
    const Lane joined({&first, &second});
    const Lane one({&whole});
    ASSERT_EQ(joined.Gaps(), one.Gaps());
    const Account segments = WalkedAccount(joined, {Meanings::OfSimulator(), FindIdleTask(joined)});
    const Account account = WalkedAccount(one, {Meanings::OfSimulator(), FindIdleTask(one)});
    EXPECT_EQ(segments, account) << "seed " << seed << '\n' << Differences(segments, account);
  }
}

bool EndsWithASwitch(const std::vector<RingRecord>& records, std::size_t count) {
  const RingRecord& last = records[count - 1];
  const bool isWholeTick = count == records.size() || records[count].tick > last.tick;
  return isWholeTick && last.type != 2 && last.type < 6;
}

// Reads end where a switch tells who ran. The last one is repeated, for nothing comes behind its last tick.
TEST(RandomSchedules, AddUpFromReadToRead) {
  for (unsigned seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    RandomSchedule random(seed);
    std::vector<RingRecord> records = random.Records(80, false);
    while (!EndsWithASwitch(records, records.size())) records.pop_back();
    ScriptedTarget target;
    PutCategories(target);
    Follower follower(Meanings::OfSimulator(), "");
    for (std::size_t end = 1; end <= records.size() + 1; ++end) {
      const std::size_t count = std::min(end, records.size());
      if (!EndsWithASwitch(records, count) || (end < records.size() && random.Below(4) > 0)) continue;
      tasklog::Log read;
      ASSERT_EQ(
          AppendRing(read.Handle(), target, RingWords(1000, {records.begin(), records.begin() + count})), 0u);
      follower.Take(std::move(read));
    }
    tasklog::Log log;
    ASSERT_EQ(AppendRing(log.Handle(), target, RingWords(1000, records)), 0u);
    const Lane lane({&log});
    const Conventions conventions{Meanings::OfSimulator(), FindIdleTask(lane)};
    Statistics whole(lane, conventions.idle);
    Walk(lane, conventions, {&whole});
    EXPECT_EQ(follower.Total().knownTicks, whole.KnownTicks());
    EXPECT_EQ(follower.Total().Busy(), whole.Busy());
    for (TaskIndex task = 0; task < lane.Tasks().size(); ++task) {
      SCOPED_TRACE(lane.Tasks()[task].name);
      const TaskTally& sums = follower.All().at(lane.Tasks()[task]).all;
      const TaskStatistics& exact = whole.Tasks()[task];
      EXPECT_EQ(sums.loadTicks, exact.loadTicks);
      EXPECT_EQ(sums.jobs, exact.jobs);
      EXPECT_EQ(sums.worstResponse, exact.Of(Quantity::response).Max());
    }
  }
}

TEST(RandomSchedules, MeanWhatEveryTickOfThemMeans) {
  for (unsigned seed = 1; seed <= 1500 && !HasFailure(); ++seed) {
    RandomSchedule random(seed);
    tasklog::Log log;
    Load(log, random);
    tasklog::Log fromFile;
    const TempFile file(Save(log.Handle()));
    ASSERT_TRUE(fromFile.AppendFromFile(file.Path()));
    const tasklog::Log& used = seed % 2 == 0 ? log : fromFile;
    const Lane whole({&used}, random.Gaps(used, random.Below(3)));
    const Ticks cut = random.Below(2) * random.Below(static_cast<unsigned>(whole.Length() / 2) + 1);
    const Lane lane = whole.Between(whole.StartTime() + cut, whole.StopTime() - cut / 2);
    Conventions conventions;
    if (seed % 3 != 0) conventions.meanings = Meanings::OfSimulator();
    if (seed % 5 != 0) conventions.idle = FindIdleTask(lane, "Idle");
    const Account walked = WalkedAccount(lane, conventions);
    const Account plain = PlainAccount(lane, used, conventions);
    EXPECT_EQ(walked, plain) << "seed " << seed << '\n'
                             << Differences(walked, plain) << DumpEntries(used.Handle());
  }
}

}  // namespace
