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
      wantMarkSubjects |= (interests & Visitor::markSubjects) != 0;
      if (interests & Visitor::runs) runs.push_back(visitor);
      if (interests & Visitor::jobs) jobs.push_back(visitor);
      if (interests & Visitor::beginnings) beginnings.push_back(visitor);
      if (interests & Visitor::states) states.push_back(visitor);
      if (interests & Visitor::marks) marks.push_back(visitor);
    }
  }

  bool wantMarkSubjects = false;
  std::vector<Visitor*> all, runs, jobs, beginnings, states, marks;
};

}  // namespace analysis
