// A lane as a picture needs it: for each task its runs, jobs, waits and marks, so arranged that a picture
// costs by its pixels and not by the entries.
#pragma once

#include <deque>
#include <vector>

#include "analysis/visitor.h"
#include "analysis/walker.h"
#include "spans.h"

namespace timeline {

using analysis::SubjectIndex;
using analysis::TaskIndex;

struct MarkPoint {
  Ticks time;
  SubjectIndex subject;  // of an event the task
  TaskIndex running;     // `noTask`: nobody is known to have run
};
using Marks = std::deque<MarkPoint>;  // in order of time

struct TaskTrack {
  Spans runs;
  Spans jobs;        // from activation to completion; between its runs and waits a job is ready
  Spans waits;       // within jobs
  Marks events;      // for this task
  Marks testpoints;  // passed while it ran
  Marks issues;      // raised while it ran
};

// A visitor. Memory: 8 bytes a run, a job and a wait, or 16 where they lie far apart, 16 a mark, 32 a timing
// issue, 8 for what is cut; in all at most 56 bytes an entry, mostly some 20, and about 4 KB a task.
class Tracks : public analysis::Visitor {
 public:
  // The lane must stay, and its logs must not change.
  Tracks(const analysis::Lane& lane, TaskIndex idle);
  static Tracks Of(const analysis::Lane& lane, const analysis::Conventions& conventions);

  const analysis::Lane& Lane() const { return *lane_; }
  TaskIndex Idle() const { return idle_; }
  const std::vector<TaskTrack>& Tasks() const { return tasks_; }   // by TaskIndex
  const Spans& Unknown() const { return unknown_; }                // covered, but nobody is known to run
  const Marks& Issues() const { return issues_; }                  // all of the lane
  const Marks& LoneTestpoints() const { return loneTestpoints_; }  // while nobody is known to run

  void OnRun(const analysis::Run& run) override;
  void OnJob(const analysis::Job& job) override;
  void OnState(TaskIndex task, analysis::JobState state, Ticks time) override;
  void OnMark(const analysis::Mark& mark) override;

 private:
  static constexpr Ticks doesNotWait = UINT64_MAX;

  const analysis::Lane* lane_;
  TaskIndex idle_;
  std::vector<TaskTrack> tasks_;
  Spans unknown_;
  Marks issues_;
  Marks loneTestpoints_;
  std::vector<Ticks> waitsSince_;  // by TaskIndex; needed during the walk alone
};

}  // namespace timeline
