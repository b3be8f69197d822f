// Where the time of a job went: who had the processor while it was ready.
#pragma once

#include <string_view>
#include <vector>

#include "visitor.h"

namespace analysis {

enum class PartKind : std::uint8_t { execution, preemption, blocking, sharing, dispatch, waiting };
std::string_view NameOf(PartKind kind);

struct Part {
  PartKind kind;
  TaskIndex task;  // who ran; `noTask` for dispatch and waiting
  Ticks ticks;
};

// A visitor that splits the response of each whole job into parts. A job costs as much as the number of tasks
// that ran while it was ready, times the logarithm of their runs. Memory: 16 bytes a run.
class Parts : public Visitor {
 public:
  // The lane must outlive the walk. A subclass may have interests of its own.
  Parts(const Lane& lane, TaskIndex idle, unsigned moreInterests = 0);

  // Told for each whole job. `parts` is valid until this returns; their sum is the response: execution, then
  // preemption, blocking and sharing by task, dispatch, waiting. None but the execution is empty.
  virtual void OnParts(const Job& job, const std::vector<Part>& parts) = 0;

  void OnRun(const Run& run) override;
  void OnState(TaskIndex task, JobState state, Ticks time) override;
  void OnJob(const Job& job) override;

 private:
  struct RunSum {
    Ticks end;    // of a run
    Ticks total;  // all runs until then
  };
  struct Share {
    TaskIndex task;
    Ticks ticks;
  };
  struct TaskState {
    std::vector<RunSum> runs;
    TaskIndex older = noTask;  // the tasks in the order of their last runs
    TaskIndex newer = noTask;
    JobState does = JobState::ended;
    Ticks since = 0;
    std::vector<Share> shares;  // of the job under way; a task may have several
    std::size_t fewShares = 64;
  };

  static Ticks TotalAt(const std::vector<RunSum>& runs, Ticks time);
  void MoveToFront(TaskIndex task);
  void Attribute(TaskState& waiter, Ticks until);
  static void Unite(std::vector<Share>& shares);
  PartKind KindOf(TaskIndex of, TaskIndex by) const;

  const std::vector<Task>& tasks_;
  TaskIndex idle_;
  std::vector<TaskState> states_;
  TaskIndex newest_ = noTask;
  TaskIndex running_ = noTask;  // its run was not told yet
  Ticks runBegin_ = 0;
  std::vector<Part> parts_;
};

}  // namespace analysis
