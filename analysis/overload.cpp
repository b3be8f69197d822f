#include "overload.h"

namespace analysis {
namespace {

// The lane is looked at in so many pieces; it is overloaded for an eighth of the time at least. A shorter
// time without idle is a burst of work.
constexpr Ticks pieces = 64;
constexpr Ticks fewestPieces = 8;
// One part in so many of a piece may be idle: after the last job of a group, before the next.
constexpr Ticks idlePart = 50;

}  // namespace

std::vector<Stretch> FindBusyStretches(const Schedule& schedule) {
  const Lane& lane = schedule.Of();
  if (schedule.Idle() == noTask) return {{lane.StartTime(), lane.StopTime()}};
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
