// The visitors of a walk, by what they want to be told.
#pragma once

#include <vector>

#include "visitor.h"

namespace analysis {

class Listeners {
 public:
  explicit Listeners(const std::vector<Visitor*>& visitors) : all_(visitors) {
    for (Visitor* visitor : visitors) {
      const unsigned interests = visitor->Interests();
      wantsMarkSubjects_ |= (interests & Visitor::wantsMarkSubjects) != 0;
      if (interests & Visitor::wantsRuns) runs_.push_back(visitor);
      if (interests & Visitor::wantsJobs) jobs_.push_back(visitor);
      if (interests & Visitor::wantsBeginnings) beginnings_.push_back(visitor);
      if (interests & Visitor::wantsStates) states_.push_back(visitor);
      if (interests & Visitor::wantsMarks) marks_.push_back(visitor);
    }
  }

  bool WantsMarks() const { return !marks_.empty(); }
  bool WantsMarkSubjects() const { return wantsMarkSubjects_; }

  void OnRun(const Run& run) {
    for (Visitor* visitor : runs_) visitor->OnRun(run);
  }
  void OnJob(const Job& job) {
    for (Visitor* visitor : jobs_) visitor->OnJob(job);
  }
  void OnActivation(const Job& job) {
    for (Visitor* visitor : beginnings_) visitor->OnActivation(job);
  }
  void OnStart(const Job& job) {
    for (Visitor* visitor : beginnings_) visitor->OnStart(job);
  }
  void OnDropped(const Job& job) {
    for (Visitor* visitor : beginnings_) visitor->OnDropped(job);
  }
  void OnState(TaskIndex task, JobState state, Ticks time) {
    for (Visitor* visitor : states_) visitor->OnState(task, state, time);
  }
  void OnMark(const Mark& mark) {
    for (Visitor* visitor : marks_) visitor->OnMark(mark);
  }
  void OnGap(const Gap& gap) {
    for (Visitor* visitor : all_) visitor->OnGap(gap);
  }
  void OnEnd(Ticks stop) {
    for (Visitor* visitor : all_) visitor->OnEnd(stop);
  }

 private:
  std::vector<Visitor*> all_, runs_, jobs_, beginnings_, states_, marks_;
  bool wantsMarkSubjects_ = false;
};

}  // namespace analysis
