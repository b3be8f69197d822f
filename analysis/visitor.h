// What a walk over a lane tells: runs, jobs, gaps and marks. docs/analysis.md defines the terms.
#pragma once

#include "lane.h"

namespace analysis {

// A task has the processor. With `noTask` nobody is known to run.
struct Run {
  TaskIndex task;
  Ticks begin;
  Ticks end;
  bool cutBegin;  // began before the period or a gap, or exactly at the start
  bool cutEnd;    // cut by a gap or the stop
  Ticks Length() const { return end - begin; }
  bool IsWhole() const { return !cutBegin && !cutEnd; }
};

// One piece of work of a task. While it is under way, it holds what is known so far.
struct Job {
  TaskIndex task = noTask;
  Ticks activation = 0;  // of a job that began before: when it was first seen
  Ticks start = 0;       // its first run, once it `hasRun`
  Ticks end = 0;         // completion, or where it was cut
  Ticks execution = 0;   // all its runs
  Ticks waiting = 0;     // all its waits
  Ticks interval = 0;    // from the activation before, when it `hasInterval`
  std::uint32_t preemptions = 0;
  std::uint32_t slices = 0;
  std::uint32_t waits = 0;
  std::uint32_t events = 0;      // during the job: it may be up to one more than this in cycles
  TaskIndex activator = noTask;  // ran at the event that began it
  Ticks activatorExecution = 0;  // of the activator's own job, at that event
  bool byEvent = false;          // begun by an event, otherwise by a switch
  bool hasRun = false;
  bool hasInterval = false;   // no gap lies between
  bool askedEarlier = false;  // start latency and response are lower bounds
  bool cutBegin = false;      // began before the start or a gap
  bool cutEnd = false;        // touched by a gap or the stop

  bool IsWhole() const { return !cutBegin && !cutEnd; }
  Ticks Response() const { return end - activation; }
  Ticks StartLatency() const { return start - activation; }
};

// What a job does, for those who split its time.
enum class JobState : std::uint8_t { ready, running, waiting, ended };

// An entry that is no switch: an event for a task, a testpoint, a timing issue.
struct Mark {
  ETLLogType type;       // TLLogTaskEvent, TLLogTestpoint or TLLogTimingIssue
  SubjectIndex subject;  // of an event the task
  TaskIndex running;     // had the processor; `noTask` where that is not known
  Ticks time;
};

// Takes part in a walk. Calls come in the order of time; within one tick: marks and the end of the job that
// leaves, events and activations, the start of the job that gets the processor, the marks behind that.
// What is handed over is valid until the call returns.
class Visitor {
 public:
  // Bits of what a visitor wants to be told; gaps and the end are told to all. Without `wantsMarkSubjects`
  // the subject of a testpoint or timing issue may be `noSubject`, which saves its look-up.
  enum Interest : unsigned {
    wantsRuns = 1,
    wantsJobs = 2,
    wantsBeginnings = 4,
    wantsStates = 8,
    wantsMarks = 16,
    wantsMarkSubjects = 32
  };

  explicit Visitor(unsigned interests) : interests_(interests) {}
  virtual ~Visitor() = default;
  unsigned Interests() const { return interests_; }

  // wantsRuns: at the end of each. Runs, gaps and unknown times follow each other without a hole.
  virtual void OnRun(const Run&) {}
  // wantsJobs: at the end of each, complete or cut. Those of one task follow each other.
  virtual void OnJob(const Job&) {}
  // wantsBeginnings. A job begun by an event may turn out to be none: then it is dropped, and OnJob() is not
  // called.
  virtual void OnActivation(const Job&) {}
  virtual void OnStart(const Job&) {}
  virtual void OnDropped(const Job&) {}
  // wantsStates: each change, after the run that ends there was told.
  virtual void OnState(TaskIndex, JobState, Ticks) {}
  // wantsMarks
  virtual void OnMark(const Mark&) {}
  // Nothing goes on across a gap: all jobs under way have been told as cut.
  virtual void OnGap(const Gap&) {}
  virtual void OnEnd(Ticks) {}  // of the period

 private:
  unsigned interests_;
};

}  // namespace analysis
