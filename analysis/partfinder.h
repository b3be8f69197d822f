// Where the time of a job, or of a part of one, went.
#pragma once

#include <vector>

#include "parts.h"
#include "schedule.h"

namespace analysis {

// What a job of `of` that is ready suffers while `by` has the processor.
PartKind KindOf(const Schedule& schedule, TaskIndex of, TaskIndex by);

// Adds up one stretch after the other. Time: the runs in the stretch, the tasks that ran times their
// logarithm, and that of how far it is from the stretch before. Memory: 12 bytes a task.
class PartFinder {
 public:
  explicit PartFinder(const Schedule& schedule);

  // What a job of `task` does in a stretch: execution first, then who else had the processor, by task,
  // dispatch and waiting. Valid until the next call.
  const std::vector<Part>& In(TaskIndex task, const Stretch& stretch);

 private:
  // `noTask` is in front.
  static std::size_t PlaceOf(TaskIndex task) { return task + TaskIndex{1}; }
  template <class TicksOf>
  void AddRuns(const Stretch& stretch, TicksOf ticksOf);
  void AddReadyRuns(TaskIndex task, const Stretch& stretch, const std::vector<Stretch>& waits);
  void SortPlaces();

  const Schedule& schedule_;
  std::size_t near_ = 0;  // the run behind the stretch before
  std::vector<Part> parts_;
  std::vector<Ticks> sums_;            // by PlaceOf(); 0 between two calls
  std::vector<std::uint32_t> places_;  // where sums are not 0; room for one more than there are
  std::size_t placeCount_ = 0;
};

// The same of one stretch alone.
std::vector<Part> PartsIn(const Schedule& schedule, TaskIndex task, const Stretch& stretch);

}  // namespace analysis
