// Where parts and values lie in time, against their sums, on random schedules.
#include <gtest/gtest.h>

#include <map>

#include "analysis/partfinder.h"
#include "analysis/pieces.h"
#include "analysis/places.h"
#include "tests/analysis/plainwalk.h"
#include "tests/analysis/randomschedule.h"

using namespace analysis;

namespace {

using SumsByWho = std::map<std::pair<PartKind, TaskIndex>, Ticks>;

void CheckPieces(const Schedule& schedule, TaskIndex task, const Stretch& job) {
  SumsByWho pieces, parts;
  for (const Piece& piece : PiecesIn(schedule, task, job, SIZE_MAX)) {
    EXPECT_LT(piece.stretch.from, piece.stretch.to);
    EXPECT_TRUE(piece.stretch.from >= job.from && piece.stretch.to <= job.to);
    pieces[{piece.kind, piece.task}] += piece.stretch.Length();
  }
  for (const Part& part : PartsIn(schedule, task, job))
    if (part.ticks > 0) parts[{part.kind, part.task}] += part.ticks;
  EXPECT_EQ(pieces, parts);
  EXPECT_LE(PiecesIn(schedule, task, job, 2).size(), 2u);
}

void CheckPlaces(const Lane& lane, const Conventions& conventions, const Statistics& statistics,
                 TaskIndex task) {
  for (std::size_t i = 0; i < quantityCount; ++i) {
    const auto quantity = static_cast<Quantity>(i);
    std::vector<std::uint64_t> expected, found;
    statistics.Tasks()[task].Of(quantity).ForEach([&](std::uint64_t value) { expected.push_back(value); });
    ValuesOf(lane, conventions, task, quantity).ForEach([&](std::uint64_t value) { found.push_back(value); });
    EXPECT_EQ(found, expected);
    const Places all = PlacesOf(lane, conventions, task, quantity, {1, UINT64_MAX, 0}, SIZE_MAX);
    EXPECT_EQ(all.count, expected.size() - static_cast<std::size_t>(std::count(
                                               expected.begin(), expected.end(), std::uint64_t{0})));
    for (const Place& place : all.first) EXPECT_LE(place.value, place.to - place.from);
    EXPECT_LE(PlacesOf(lane, conventions, task, quantity, {0, UINT64_MAX, 0}, 1).first.size(), 1u);
  }
}

TEST(LookingBack, FindsWhatAddsUp) {
  for (unsigned seed = 1; seed <= 200 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    RandomSchedule random(seed);
    ScriptedTarget target;
    PutCategories(target);
    tasklog::Log log;
    ASSERT_EQ(AppendRing(log.Handle(), target, RingWords(1000, random.Records(120, false))), 0u);
    const Lane lane({&log});
    const Conventions conventions{Meanings::OfSimulator(), FindIdleTask(lane)};
    const Schedule schedule(lane, conventions);
    const Statistics statistics = Statistics::Of(lane, conventions);
    for (TaskIndex task = 0; task < lane.Tasks().size(); ++task) {
      for (const PastJob& job : schedule.JobsOf(task)) CheckPieces(schedule, task, {job.activation, job.end});
      CheckPlaces(lane, conventions, statistics, task);
    }
  }
}

}  // namespace
