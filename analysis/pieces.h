// Where in time the parts of a job lie.
#pragma once

#include <vector>

#include "parts.h"
#include "schedule.h"

namespace analysis {

struct Piece {
  PartKind kind;
  TaskIndex task;  // as in Part
  Stretch stretch;
};

// The pieces of a stretch of `task`, in order of time; those of one kind and task add up to what PartsIn()
// says. Of more than `most` the longest are given. Time: the runs in the stretch.
std::vector<Piece> PiecesIn(const Schedule& schedule, TaskIndex task, const Stretch& stretch,
                            std::size_t most);

}  // namespace analysis
