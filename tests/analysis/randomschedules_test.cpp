// The walk against the plain second computation, on random schedules.
#include <gtest/gtest.h>

#include "analysis/follower.h"
#include "analysis/statistics.h"
#include "analysis/walker.h"
#include "tests/analysis/plainwalk.h"
#include "tests/analysis/randomschedule.h"

using namespace analysis;

namespace {

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
