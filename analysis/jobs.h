// The jobs under way: from who had the processor and who was asked to run to what each job came to.
#pragma once

#include <vector>

#include "listeners.h"
#include "meanings.h"

namespace analysis {

// Times never go back from call to call. The idle task and `noTask` are taken and have no jobs.
class Jobs {
 public:
  Jobs(const Lane& lane, TaskIndex idle, const Listeners& listeners);

  // An event for `task`, raised while `running` ran. `begins`: it may begin a job.
  void Event(TaskIndex task, Ticks time, TaskIndex running, bool begins = true);
  // `task` gets the processor by a switch of this meaning, other than plain. `begins` as above.
  void Enter(TaskIndex task, Meaning meaning, Ticks time, bool begins = true);
  // `task`, which had the processor, leaves it by a switch of this meaning.
  void Leave(TaskIndex task, Meaning meaning, Ticks time);
  // Cuts all jobs under way; from here on nothing is known of any.
  void Cut(Ticks time);

 private:
  struct State {
    Job job;
    JobState does = JobState::ended;
    bool isFirst = true;         // no job was seen since the start or a gap
    bool wasFirst = true;        // the same before the job at hand
    bool countedEvent = false;   // the job before did
    bool hasActivation = false;  // since the start or a gap
    bool isAmongUnrun = false;
    std::uint32_t place = 0;  // among the active
    std::uint32_t epoch = 0;  // what the flags above are about
    Ticks activation = 0;     // of the job before
    Ticks since = 0;          // it does what it does
  };

  State& Of(TaskIndex task);
  bool HasJobs(TaskIndex task) const { return task != noTask && task != idle_; }
  State& Begin(TaskIndex task, Ticks time);
  void Start(State& state, Ticks time);
  void End(State& state, Ticks time);
  void Change(State& state, JobState to, Ticks time);
  void DropUnrun(std::int64_t abovePriority, Ticks time);
  void Drop(State& state, Ticks time);
  void Remove(State& state);

  const std::vector<Task>& tasks_;
  TaskIndex idle_;
  const Listeners& listeners_;
  std::vector<State> states_;      // by TaskIndex
  std::vector<TaskIndex> active_;  // tasks with a job
  std::vector<TaskIndex> unrun_;   // a heap, highest priority in front: jobs begun by an event that have
                                   // not run, and tasks of which that was true
  std::uint32_t epoch_ = 0;
};

}  // namespace analysis
