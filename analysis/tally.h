// Statistics that can be added up: a few numbers for each task, however long a lane is watched and whatever
// was let go of it meanwhile.
#pragma once

#include <optional>
#include <vector>

#include "visitor.h"

namespace analysis {

struct TaskTally {
  Ticks loadTicks = 0;
  std::uint64_t jobs = 0;    // whole ones
  std::uint64_t cut = 0;     // touched by a gap, or begun before anything is known
  std::uint64_t issues = 0;  // raised while it ran
  Ticks worstResponse = 0;   // of `jobs`
  Ticks worstAt = 0;         // when that one was activated

  void Add(const TaskTally& later);
  bool IsEmpty() const { return loadTicks == 0 && jobs == 0 && cut == 0; }
};

struct LaneTally {
  Ticks knownTicks = 0;  // somebody is known to run
  Ticks gapTicks = 0;
  Ticks idleTicks = 0;       // the idle task ran
  Ticks idleKnownTicks = 0;  // of the known ticks those in which there is an idle task
  std::uint64_t switches = 0;
  std::uint64_t issues = 0;

  void Add(const LaneTally& later);
  // Shares of the known time; empty where nothing is known, or without an idle task.
  std::optional<double> LoadOf(const TaskTally& task) const;
  std::optional<double> Busy() const;
};

// A visitor. It counts what ends or happens in a stretch of the lane: from `from`, included, to `to`, not
// included. Of runs and gaps it takes the part within; jobs that the end of the lane cuts go on.
class Tally : public Visitor {
 public:
  Tally(const Lane& lane, TaskIndex idle, Ticks from, Ticks to);

  void OnRun(const Run& run) override;
  void OnJob(const Job& job) override;
  void OnMark(const Mark& mark) override;
  void OnGap(const Gap& gap) override;

  const LaneTally& OfLane() const { return lane_; }
  const std::vector<TaskTally>& Tasks() const { return tasks_; }  // by TaskIndex

 private:
  bool Holds(Ticks time) const { return time >= from_ && time < to_; }
  Ticks PartOf(Ticks begin, Ticks end) const;

  Ticks from_;
  Ticks to_;
  Ticks stop_;
  TaskIndex idle_;
  LaneTally lane_;
  std::vector<TaskTally> tasks_;
};

}  // namespace analysis
