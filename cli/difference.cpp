#include "difference.h"

#include "failure.h"
#include "text.h"

namespace cli {
namespace {

using analysis::Statistics;

void RequireOneRate(const std::vector<AnalysedLane>& lanes, std::uint64_t rate) {
  for (const AnalysedLane& lane : lanes) {
    if (lane.lane.TicksPerSecond() != rate)
      throw Failure("diff: " + Quoted(lane.source.shownAs) +
                    " has another tick rate than the first log, so their ticks cannot be compared");
  }
}

std::vector<Statistics> WalkAll(const std::vector<AnalysedLane>& lanes) {
  std::vector<Statistics> statistics;
  for (const AnalysedLane& lane : lanes) statistics.push_back(Statistics::Of(lane.lane, lane.conventions));
  return statistics;
}

std::vector<analysis::LaneResult> ResultsOf(const std::vector<AnalysedLane>& lanes,
                                            const std::vector<Statistics>& statistics, bool named) {
  std::vector<analysis::LaneResult> results;
  for (std::size_t i = 0; i < lanes.size(); ++i)
    results.push_back({named ? lanes[i].source.name : "", &lanes[i].lane, &statistics[i]});
  return results;
}

}  // namespace

Difference CompareSides(std::vector<AnalysedLane> before, std::vector<AnalysedLane> after, bool named) {
  const std::uint64_t rate = before.front().lane.TicksPerSecond();
  RequireOneRate(before, rate);
  RequireOneRate(after, rate);
  const std::vector<Statistics> ofBefore = WalkAll(before);
  const std::vector<Statistics> ofAfter = WalkAll(after);
  analysis::Comparison comparison =
      analysis::Compare(ResultsOf(before, ofBefore, named), ResultsOf(after, ofAfter, named));
  return {std::move(before), std::move(after), std::move(comparison), named};
}

}  // namespace cli
