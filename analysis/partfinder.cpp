#include "partfinder.h"

#include <algorithm>
#include <utility>

namespace analysis {
namespace {

// Where so large a part of all tasks ran, going through all is quicker than sorting those.
constexpr std::size_t largePart = 8;

}  // namespace

PartKind KindOf(const Schedule& schedule, TaskIndex of, TaskIndex by) {
  const std::uint32_t own = schedule.PriorityOf(of);
  const std::uint32_t other = schedule.PriorityOf(by);
  return other > own ? PartKind::preemption : other < own ? PartKind::blocking : PartKind::sharing;
}

PartFinder::PartFinder(const Schedule& schedule)
    : schedule_(schedule), sums_(schedule.TaskCount() + 1), places_(schedule.TaskCount() + 2) {}

const std::vector<Part>& PartFinder::In(TaskIndex task, const Stretch& stretch) {
  const std::vector<Stretch> waits = schedule_.WaitsIn(task, stretch);
  if (waits.empty())
    AddRuns(stretch, [](TaskIndex, const Stretch& run) { return run.Length(); });
  else
    AddReadyRuns(task, stretch, waits);
  Ticks dispatch = std::exchange(sums_[PlaceOf(noTask)], 0);
  parts_.assign(1, {PartKind::execution, task, std::exchange(sums_[PlaceOf(task)], 0)});
  SortPlaces();
  for (std::size_t i = 0; i < placeCount_; ++i) {
    const auto by = static_cast<TaskIndex>(places_[i] - 1);
    const Ticks ticks = std::exchange(sums_[places_[i]], 0);
    if (schedule_.IsIdle(by))
      dispatch += ticks;
    else if (ticks > 0)
      parts_.push_back({KindOf(schedule_, task, by), by, ticks});
  }
  Ticks waiting = 0;
  for (const Stretch& wait : waits) waiting += wait.Length();
  if (dispatch > 0) parts_.push_back({PartKind::dispatch, noTask, dispatch});
  if (waiting > 0) parts_.push_back({PartKind::waiting, task, waiting});
  return parts_;
}

// Whether a task is met for the first time is not to be foreseen, so nothing branches on it.
template <class TicksOf>
void PartFinder::AddRuns(const Stretch& stretch, TicksOf ticksOf) {
  std::size_t count = 0;
  const std::size_t first = schedule_.RunAt(stretch.from, near_);
  near_ = schedule_.ForEachRunFrom(first, stretch, [&](TaskIndex by, const Stretch& run) {
    const std::size_t place = PlaceOf(by);
    const Ticks before = sums_[place];
    const Ticks sum = before + ticksOf(by, run);
    sums_[place] = sum;
    places_[count] = static_cast<std::uint32_t>(place);
    count += (before == 0) & (sum != 0);
  });
  placeCount_ = count;
}

// Of others' runs only what lies outside of the waits.
void PartFinder::AddReadyRuns(TaskIndex task, const Stretch& stretch, const std::vector<Stretch>& waits) {
  auto wait = waits.begin();
  AddRuns(stretch, [&](TaskIndex by, const Stretch& run) {
    Ticks ready = run.Length();
    if (by == task) return ready;
    while (wait != waits.end() && wait->to <= run.from) ++wait;
    for (auto one = wait; one != waits.end() && one->from < run.to; ++one)
      ready -= std::min(one->to, run.to) - std::max(one->from, run.from);
    return ready;
  });
}

void PartFinder::SortPlaces() {
  if (placeCount_ * largePart < sums_.size())
    return std::sort(places_.begin(), places_.begin() + static_cast<std::ptrdiff_t>(placeCount_));
  placeCount_ = 0;
  for (std::size_t place = 0; place < sums_.size(); ++place) {
    places_[placeCount_] = static_cast<std::uint32_t>(place);
    placeCount_ += sums_[place] != 0;
  }
}

std::vector<Part> PartsIn(const Schedule& schedule, TaskIndex task, const Stretch& stretch) {
  return PartFinder(schedule).In(task, stretch);
}

}  // namespace analysis
