#include "jobs.h"

#include <algorithm>
#include <utility>

namespace analysis {

Jobs::Jobs(const Lane& lane, TaskIndex idle, const Listeners& listeners)
    : tasks_(lane.Tasks()), idle_(idle), listeners_(listeners), states_(lane.Tasks().size()) {
  for (TaskIndex task = 0; task < states_.size(); ++task) states_[task].job.task = task;
}

// What was known of a task before a gap is forgotten when it is next asked for.
Jobs::State& Jobs::Of(TaskIndex task) {
  State& state = states_[task];
  if (state.epoch == epoch_) return state;
  state.epoch = epoch_;
  state.isFirst = true;
  state.countedEvent = false;
  state.hasActivation = false;
  return state;
}

void Jobs::Event(TaskIndex task, Ticks time, TaskIndex running, bool begins) {
  if (!HasJobs(task)) return;
  State& state = Of(task);
  if (state.does != JobState::ended) {
    ++state.job.events;
    if (state.does == JobState::waiting) Change(state, JobState::ready, time);
    return;
  }
  if (!begins) return;
  Begin(task, time);
  state.job.byEvent = true;
  if (HasJobs(running)) {
    const State& other = states_[running];
    state.job.activator = running;
    state.job.activatorExecution = other.job.execution + (time - other.since);
  }
  if (!state.isAmongUnrun) {
    state.isAmongUnrun = true;
    unrun_.push_back(task);
    std::push_heap(unrun_.begin(), unrun_.end(),
                   [this](TaskIndex a, TaskIndex b) { return tasks_[a].priority < tasks_[b].priority; });
  }
  for (Visitor* visitor : listeners_.beginnings) visitor->OnActivation(state.job);
  Change(state, JobState::ready, time);
}

void Jobs::Enter(TaskIndex task, Meaning meaning, Ticks time, bool begins) {
  if (task == noTask) return;
  if (task == idle_) return DropUnrun(-1, time);
  State& state = Of(task);
  if (state.does == JobState::ended) {
    Begin(task, time);
    const bool goesOn = meaning == Meaning::done || meaning == Meaning::waits || meaning == Meaning::slice;
    state.job.cutBegin = state.wasFirst && (goesOn || !begins);
    state.job.askedEarlier = state.countedEvent && (meaning == Meaning::done || meaning == Meaning::slice);
    if (!state.job.cutBegin)
      for (Visitor* visitor : listeners_.beginnings) visitor->OnActivation(state.job);
  }
  if (!state.job.hasRun) Start(state, time);
  Change(state, JobState::running, time);
}

void Jobs::Leave(TaskIndex task, Meaning meaning, Ticks time) {
  if (!HasJobs(task)) return;
  State& state = Of(task);
  if (state.does != JobState::running) return;
  switch (meaning) {
    case Meaning::preempted: ++state.job.preemptions; break;
    case Meaning::slice: ++state.job.slices; break;
    case Meaning::waits: ++state.job.waits; return Change(state, JobState::waiting, time);
    default: Change(state, JobState::ended, time); return End(state, time);
  }
  Change(state, JobState::ready, time);
}

void Jobs::Cut(Ticks time) {
  std::sort(active_.begin(), active_.end());
  for (const TaskIndex task : active_) {
    State& state = states_[task];
    state.job.cutEnd = true;
    Change(state, JobState::ended, time);
    End(state, time);
  }
  active_.clear();
  ++epoch_;
}

Jobs::State& Jobs::Begin(TaskIndex task, Ticks time) {
  State& state = states_[task];
  state.job = Job();
  state.job.task = task;
  state.job.activation = time;
  state.wasFirst = std::exchange(state.isFirst, false);
  state.since = time;
  state.does = JobState::ready;
  state.place = static_cast<std::uint32_t>(active_.size());
  active_.push_back(task);
  return state;
}

// Where a job of lower priority begins to run, one of higher priority was not ready.
void Jobs::Start(State& state, Ticks time) {
  Job& job = state.job;
  job.hasRun = true;
  job.start = time;
  if (job.cutBegin) return;
  DropUnrun(tasks_[job.task].priority, time);
  for (Visitor* visitor : listeners_.beginnings) visitor->OnStart(job);
}

void Jobs::Change(State& state, JobState to, Ticks time) {
  if (state.does == JobState::running) state.job.execution += time - state.since;
  if (state.does == JobState::waiting) state.job.waiting += time - state.since;
  state.does = to;
  state.since = time;
  for (Visitor* visitor : listeners_.states) visitor->OnState(state.job.task, to, time);
}

// The caller takes it from the active ones when it was cut.
void Jobs::End(State& state, Ticks time) {
  Job& job = state.job;
  job.end = time;
  if (!job.cutBegin) {
    job.hasInterval = state.hasActivation;
    if (job.hasInterval) job.interval = job.activation - state.activation;
    state.hasActivation = true;
    state.activation = job.activation;
  }
  state.countedEvent = job.events > 0;
  if (!job.cutEnd) Remove(state);
  for (Visitor* visitor : listeners_.jobs) visitor->OnJob(job);
}

// The heap holds a task at most once, and tasks whose job has run since are left in it until they are in
// front; so all this costs a constant, or the logarithm of the tasks, for each event.
void Jobs::DropUnrun(std::int64_t abovePriority, Ticks time) {
  while (!unrun_.empty()) {
    State& state = states_[unrun_.front()];
    const bool isUnrun = state.does != JobState::ended && state.job.byEvent && !state.job.hasRun;
    if (isUnrun && tasks_[unrun_.front()].priority <= abovePriority) return;
    std::pop_heap(unrun_.begin(), unrun_.end(),
                  [this](TaskIndex a, TaskIndex b) { return tasks_[a].priority < tasks_[b].priority; });
    unrun_.pop_back();
    state.isAmongUnrun = false;
    if (isUnrun) Drop(state, time);
  }
}

void Jobs::Drop(State& state, Ticks time) {
  Remove(state);
  state.isFirst = state.wasFirst;
  Change(state, JobState::ended, time);
  for (Visitor* visitor : listeners_.beginnings) visitor->OnDropped(state.job);
}

void Jobs::Remove(State& state) {
  const TaskIndex last = active_.back();
  active_[state.place] = last;
  states_[last].place = state.place;
  active_.pop_back();
}

}  // namespace analysis
