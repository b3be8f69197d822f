// What the tasks of a lane usually do: worked out for those that are asked for.
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <vector>

#include "activators.h"
#include "partfinder.h"
#include "partmedians.h"
#include "schedule.h"
#include "usual.h"

namespace analysis {

class Habits {
 public:
  // With a good log it says what is normal of the tasks that it has; both are borrowed.
  explicit Habits(const Schedule& schedule, const Schedule* good = nullptr);
  bool AreOfGoodLog(TaskIndex task) const { return good_ && inGood_[task] != noTask; }

  // Of whole jobs, in the order of time.
  const Usual& Execution(TaskIndex task);  // of one cycle
  const Usual& Response(TaskIndex task);
  const Usual& Waiting(TaskIndex task);
  const Usual& Interval(TaskIndex task);  // of all jobs that have one

  // Behind this place in Schedule::JobsOf() the jobs are of another kind, for good; nothing there is normal.
  std::size_t ChangeOf(TaskIndex task);
  Ticks NormalResponse(TaskIndex task);
  // The median of each part of the task's jobs.
  const std::vector<Part>& NormalParts(TaskIndex task);
  // The same of the part of a job of `by` until it activates `task`.
  const std::vector<Part>& NormalPartsUntil(TaskIndex by, TaskIndex task);

  const Activator& ActivatorOf(TaskIndex task);
  // The time from release to release where releases come regularly, else 0.
  Ticks PeriodOf(TaskIndex task);

 private:
  struct OfTask {
    std::array<std::optional<Usual>, 4> usual;
    std::optional<Ticks> response;
    std::optional<Activator> activator;
    std::optional<std::vector<Part>> parts;
    std::optional<std::vector<Part>> partsUntil;  // of the one that activates it
  };
  std::vector<Part> Translated(const std::vector<Part>& good) const;
  template <class Pick>
  const Usual& Find(TaskIndex task, std::size_t which, double leastShare, Ticks leastDistance, Pick pick);

  const Schedule& schedule_;
  PartFinder finder_;
  PartMedians medians_;
  std::unique_ptr<Habits> good_;   // null: the lane itself says what is normal
  std::vector<TaskIndex> inGood_;  // by TaskIndex
  std::vector<TaskIndex> ofGood_;  // back, by that of the good log
  std::vector<OfTask> tasks_;
};

}  // namespace analysis
