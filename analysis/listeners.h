// The visitors of a walk, by what they want to be told.
#pragma once

#include <vector>

#include "visitor.h"

namespace analysis {

class Listeners {
 public:
  explicit Listeners(const std::vector<Visitor*>& visitors) : all(visitors) {
    for (Visitor* visitor : visitors) {
      const unsigned interests = visitor->Interests();
      wantMarkSubjects |= (interests & Visitor::wantsMarkSubjects) != 0;
      if (interests & Visitor::wantsRuns) runs.push_back(visitor);
      if (interests & Visitor::wantsJobs) jobs.push_back(visitor);
      if (interests & Visitor::wantsBeginnings) beginnings.push_back(visitor);
      if (interests & Visitor::wantsStates) states.push_back(visitor);
      if (interests & Visitor::wantsMarks) marks.push_back(visitor);
    }
  }

  bool wantMarkSubjects = false;
  std::vector<Visitor*> all, runs, jobs, beginnings, states, marks;
};

}  // namespace analysis
