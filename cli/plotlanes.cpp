#include "plotlanes.h"

#include <algorithm>

#include "timeline/selection.h"

namespace cli {
namespace {

using analysis::Ticks;

bool BelongTo(const PlotGroup& group, const PlotLane& lane) {
  const bool sameRate = group.lanes.front()->of.lane.TicksPerSecond() == lane.of.lane.TicksPerSecond();
  return sameRate && lane.of.lane.StartTime() <= group.to && lane.of.lane.StopTime() >= group.from;
}

}  // namespace

PlotLane::PlotLane(AnalysedLane analysed)
    : of(std::move(analysed)),
      tracks(timeline::Tracks::Of(of.lane, of.conventions)),
      statistics(of.lane, of.conventions.idle) {}

void PlotGroup::Select(Ticks begin, Ticks end) {
  from = std::clamp(begin, from, to);
  to = std::clamp(end, from, to);
  for (PlotLane* lane : lanes)
    lane->statistics =
        timeline::Select(lane->of.lane, lane->of.conventions.meanings, lane->of.IdleName(), from, to);
}

std::vector<PlotGroup> Grouped(const std::vector<PlotLane*>& lanes) {
  std::vector<PlotGroup> groups;
  for (PlotLane* const lane : lanes) {
    const Ticks from = lane->of.lane.StartTime();
    const Ticks to = lane->of.lane.StopTime();
    const tasklog::Log* log = &lane->of.loaded->log;
    if (groups.empty() || !BelongTo(groups.back(), *lane)) groups.push_back({{}, from, to, log});
    PlotGroup& group = groups.back();
    group.lanes.push_back(lane);
    group.from = std::min(group.from, from);
    group.to = std::max(group.to, to);
    if (log->StartTime() < group.first->StartTime()) group.first = log;
  }
  return groups;
}

}  // namespace cli
