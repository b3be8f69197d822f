#include "overload.h"

#include <algorithm>

namespace analysis {
namespace {

// The lane is looked at in so many pieces; it is overloaded for an eighth of the time at least. A shorter
// time without idle is a burst of work.
constexpr Ticks pieces = 64;
constexpr Ticks fewestPieces = 8;
// One part in so many of a piece may be idle: after the last job of a group, before the next.
constexpr Ticks idlePart = 20;
// A task that gets through with fewer of its releases is no longer seen to have that period.
constexpr Ticks mostLost = 10;
// What tasks ask for is known to so much of the time.
constexpr double leastDemand = 1.0;

bool IsMultiple(Ticks interval, Ticks of) {
  const Ticks beyond = interval % of;
  return interval <= of * mostLost && std::min(beyond, of - beyond) * 20 <= of;
}

// A task that loses releases looks like one of a longer period, or of none; the issue that each lost release
// raises tells. 0: it has no period.
Ticks TruePeriodOf(Habits& habits, TaskIndex task, const std::vector<Deadline>& deadlines) {
  const Usual& interval = habits.Interval(task);
  Ticks period = habits.PeriodOf(task) == 0 ? 0 : std::min(interval.low, interval.median);
  for (const Deadline& deadline : deadlines) {
    const Ticks length = std::max<Ticks>(deadline.length, 1);
    const bool fits = IsMultiple(interval.quarter, length) && IsMultiple(interval.median, length) &&
                      IsMultiple(interval.threeQuarters, length);
    if (fits && (period == 0 || length < period)) period = length;
  }
  return period;
}

// The share of the time that the tasks would need to do all that they are asked for.
double DemandOf(const Schedule& schedule, Habits& habits,
                const std::vector<std::vector<Deadline>>& deadlines) {
  const auto length = static_cast<double>(schedule.Of().CoveredTicks());
  double demand = 0;
  for (TaskIndex task = 0; task < schedule.TaskCount(); ++task) {
    if (schedule.IsIdle(task) || length == 0) continue;
    const double load = static_cast<double>(schedule.RunTimeOf(task)) / length;
    const Ticks period = TruePeriodOf(habits, task, deadlines[task]);
    const double asked =
        period == 0 ? 0 : static_cast<double>(habits.Execution(task).median) / static_cast<double>(period);
    demand += std::max(load, asked);
  }
  return demand;
}

}  // namespace

std::vector<Stretch> FindBusyStretches(const Schedule& schedule, Habits& habits,
                                       const std::vector<std::vector<Deadline>>& deadlines) {
  const Lane& lane = schedule.Of();
  if (schedule.Idle() == noTask) return {{lane.StartTime(), lane.StopTime()}};
  if (DemandOf(schedule, habits, deadlines) > leastDemand) return {{lane.StartTime(), lane.StopTime()}};
  const Ticks length = lane.Length() / pieces;
  if (length == 0) return {};
  std::vector<Stretch> busy;
  Ticks since = lane.StartTime();
  const auto end = [&](Ticks until) {
    if (until >= since + fewestPieces * length) busy.push_back({since, until});
  };
  for (Ticks i = 0; i < pieces; ++i) {
    const Stretch piece{lane.StartTime() + i * length,
                        i + 1 < pieces ? lane.StartTime() + (i + 1) * length : lane.StopTime()};
    Ticks idle = 0;
    schedule.ForEachRun(
        piece, [&](TaskIndex task, const Stretch& run) { idle += schedule.IsIdle(task) ? run.Length() : 0; });
    if (idle * idlePart <= piece.Length()) continue;
    end(piece.from);
    since = piece.to;
  }
  end(lane.StopTime());
  return busy;
}

}  // namespace analysis
