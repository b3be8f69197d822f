// Which jobs of a lane are to be explained: those that somebody asks about, or those that look late.
#pragma once

#include <optional>
#include <vector>

#include "lateness.h"

namespace analysis {

// What to look for; without any of it, it is looked for by itself.
struct Question {
  TaskIndex task = noTask;           // only of this one
  std::optional<Ticks> at;           // jobs under way then
  std::vector<SubjectIndex> issues;  // jobs under way when one of these is raised; ascending
  std::optional<Ticks> over;         // jobs whose response is longer
  bool AsksForJobs() const { return at || !issues.empty() || over; }
};

struct Suspects {
  std::vector<std::vector<LateJob>> late;  // by TaskIndex; of each task by time
  std::vector<Stretch> overloaded;         // there the lane has too much to do
  std::uint64_t asked = 0;                 // that the question is about, late or not

  bool IsOverloadedAt(Ticks time) const;
};

Suspects FindSuspects(const Schedule& schedule, Habits& habits, const Question& question);

}  // namespace analysis
