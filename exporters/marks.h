// Where formats with tracks show what happened at an instant.
#pragma once

#include <optional>

#include "analysis/visitor.h"
#include "exporter.h"

namespace exporters {

// The task on whose track a mark stands: of an event the one that it is for, else the one that ran; `noTask`
// for the track of the lane. Empty when the mark is not wanted.
inline std::optional<analysis::TaskIndex> TaskOf(const analysis::Mark& mark, const Source& source) {
  const analysis::TaskIndex task = mark.type == TLLogTaskEvent ? mark.subject : mark.running;
  if (!source.Wants(task) || mark.subject == analysis::noSubject) return {};
  return task;
}

}  // namespace exporters
