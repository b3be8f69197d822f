// The jobs under way: from who had the processor and who was asked to run to what each job came to.
#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "meanings.h"
#include "visitor.h"

namespace analysis {

// Tells a sink what becomes of jobs; listeners.h has the one for visitors. Times never go back from call to
// call. The idle task and `noTask` are taken and have no jobs.
template <class Sink>
class Jobs {
 public:
  Jobs(const Lane& lane, TaskIndex idle, Sink& sink)
      : idle_(idle), sink_(sink), states_(lane.Tasks().size()) {
    for (TaskIndex task = 0; task < states_.size(); ++task) {
      states_[task].job.task = task;
      states_[task].priority = lane.Tasks()[task].priority;
    }
  }

  // An event for `task`, raised while `running` ran. `begins`: it may begin a job.
  void Event(TaskIndex task, Ticks time, TaskIndex running, bool begins = true) {
    if (!HasJobs(task)) return;
    State& state = Of(task);
    if (state.does != JobState::ended) {
      ++state.job.events;
      if (state.does == JobState::waiting) Change(state, JobState::ready, time);
    } else if (begins) {
      BeginByEvent(state, time, running);
    }
  }

  // `task` gets the processor by a switch of this meaning, other than plain. `begins` as above.
  void Enter(TaskIndex task, Meaning meaning, Ticks time, bool begins = true) {
    if (task == noTask) return;
    if (task == idle_) return DropUnrun(-1, time);
    State& state = Of(task);
    if (state.does == JobState::ended) BeginBySwitch(state, meaning, time, begins);
    if (!state.job.hasRun) Start(state, time);
    Change(state, JobState::running, time);
  }

  // `task`, which had the processor, leaves it by a switch of this meaning.
  void Leave(TaskIndex task, Meaning meaning, Ticks time) {
    if (!HasJobs(task)) return;
    State& state = states_[task];
    if (state.does != JobState::running) return;
    const bool isPreempted = meaning == Meaning::preempted;
    const bool isSliced = meaning == Meaning::slice;
    const bool waits = meaning == Meaning::waits;
    state.job.preemptions += isPreempted;
    state.job.slices += isSliced;
    state.job.waits += waits;
    if (isPreempted || isSliced) return Change(state, JobState::ready, time);
    if (waits) return Change(state, JobState::waiting, time);
    Change(state, JobState::ended, time);
    End(state, time);
  }

  // `task` had the processor within the tick at `time` and completed its job there. Without a job it began
  // one in the same tick, or goes on with one that began before all that is known.
  void Complete(TaskIndex task, Ticks time) {
    if (!HasJobs(task)) return;
    State& state = Of(task);
    if (state.does == JobState::ended) {
      Begin(state, time);
      state.job.cutBegin = state.wasFirst;
      if (!state.job.cutBegin) sink_.OnActivation(state.job);
    }
    if (!state.job.hasRun) {
      state.job.hasRun = true;
      state.job.start = time;
      if (!state.job.cutBegin) sink_.OnStart(state.job);
    }
    Change(state, JobState::ended, time);
    End(state, time);
  }

  // Cuts all jobs under way; from here on nothing is known of any.
  void Cut(Ticks time) {
    std::sort(touched_.begin(), touched_.end());
    for (const TaskIndex task : touched_) {
      State& state = states_[task];
      if (state.does == JobState::ended) continue;
      state.job.cutEnd = true;
      Change(state, JobState::ended, time);
      End(state, time);
    }
    touched_.clear();
    ++epoch_;
  }

 private:
  struct State {
    Job job;
    Ticks since = 0;       // it does what it does
    Ticks activation = 0;  // of the job before
    std::uint32_t priority = 0;
    std::uint32_t epoch = 0;  // what the flags below are about
    JobState does = JobState::ended;
    bool isFirst = true;         // no job was seen since the start or a gap
    bool wasFirst = true;        // the same before the job at hand
    bool countedEvent = false;   // the job before did
    bool hasActivation = false;  // since the start or a gap
    bool isAmongUnrun = false;
  };

  bool HasJobs(TaskIndex task) const { return task != noTask && task != idle_; }

  // What was known of a task before a gap is forgotten when it is next met.
  State& Of(TaskIndex task) {
    State& state = states_[task];
    if (state.epoch != epoch_) Forget(state);
    return state;
  }
  void Forget(State& state) {
    touched_.push_back(state.job.task);
    state.epoch = epoch_;
    state.isFirst = true;
    state.countedEvent = false;
    state.hasActivation = false;
  }

  void Begin(State& state, Ticks time) {
    const TaskIndex task = state.job.task;
    state.job = fresh_;
    state.job.task = task;
    state.job.activation = time;
    state.wasFirst = std::exchange(state.isFirst, false);
    Change(state, JobState::ready, time);
  }

  void BeginByEvent(State& state, Ticks time, TaskIndex running) {
    Begin(state, time);
    state.job.byEvent = true;
    if (HasJobs(running)) {
      const State& other = states_[running];
      const bool runs = other.does == JobState::running;
      state.job.activator = running;
      state.job.activatorExecution = other.job.execution + (runs ? time - other.since : 0);
    }
    if (!std::exchange(state.isAmongUnrun, true)) {
      unrun_.push_back(state.job.task);
      std::push_heap(unrun_.begin(), unrun_.end(), IsLower{states_});
    }
    sink_.OnActivation(state.job);
  }

  void BeginBySwitch(State& state, Meaning meaning, Ticks time, bool begins) {
    Begin(state, time);
    const bool mayHaveBeenReady = meaning == Meaning::done || meaning == Meaning::slice;
    const bool goesOn = mayHaveBeenReady || meaning == Meaning::waits || !begins;
    state.job.cutBegin = state.wasFirst && goesOn;
    state.job.askedEarlier = state.countedEvent && mayHaveBeenReady;
    if (!state.job.cutBegin) sink_.OnActivation(state.job);
  }

  // Where a job of lower priority begins to run, one of higher priority was not ready.
  void Start(State& state, Ticks time) {
    state.job.hasRun = true;
    state.job.start = time;
    if (state.job.cutBegin) return;
    if (!unrun_.empty()) DropUnrun(state.priority, time);
    sink_.OnStart(state.job);
  }

  void Change(State& state, JobState to, Ticks time) {
    if (state.does == JobState::running) state.job.execution += time - state.since;
    if (state.does == JobState::waiting) state.job.waiting += time - state.since;
    state.does = to;
    state.since = time;
    sink_.OnState(state.job.task, to, time);
  }

  void End(State& state, Ticks time) {
    Job& job = state.job;
    job.end = time;
    if (!job.cutBegin) {
      job.hasInterval = std::exchange(state.hasActivation, true);
      const Ticks before = std::exchange(state.activation, job.activation);
      if (job.hasInterval) job.interval = job.activation - before;
    }
    state.countedEvent = job.events > 0;
    sink_.OnJob(job);
  }

  // The heap holds a task at most once, and tasks whose job has run since are left in it until they are in
  // front; so all this costs a constant, or the logarithm of the tasks, for each event.
  void DropUnrun(std::int64_t abovePriority, Ticks time) {
    while (!unrun_.empty()) {
      State& state = states_[unrun_.front()];
      const bool isUnrun = state.does != JobState::ended && state.job.byEvent && !state.job.hasRun;
      if (isUnrun && state.priority <= abovePriority) return;
      std::pop_heap(unrun_.begin(), unrun_.end(), IsLower{states_});
      unrun_.pop_back();
      state.isAmongUnrun = false;
      if (!isUnrun) continue;
      state.isFirst = state.wasFirst;
      Change(state, JobState::ended, time);
      sink_.OnDropped(state.job);
    }
  }

  struct IsLower {
    const std::vector<State>& states;
    bool operator()(TaskIndex a, TaskIndex b) const { return states[a].priority < states[b].priority; }
  };

  TaskIndex idle_;
  Sink& sink_;
  std::vector<State> states_;       // by TaskIndex
  std::vector<TaskIndex> touched_;  // met since the start or the last gap
  std::vector<TaskIndex> unrun_;    // a heap, highest priority in front: tasks with a job that an event began
                                    // and that has not run, and tasks of which that was true
  std::uint32_t epoch_ = 1;
  const Job fresh_ = {};  // copied in wide pieces, where making a new one sets field after field
};

}  // namespace analysis
