// What the page has open: lanes, in groups that share a time axis, and the rows it shows.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "analysis/schedule.h"
#include "call.h"
#include "cli/plotlanes.h"
#include "timeline/rows.h"
#include "timeline/window.h"

namespace viewer {

// A lane of the recording with what is made of it on demand.
class ViewedLane {
 public:
  explicit ViewedLane(cli::AnalysedLane analysed);

  const cli::AnalysedLane& Of() const { return drawn.of; }
  const timeline::Tracks& Tracks() const { return drawn.tracks; }
  // For findings and the parts of jobs; the first use makes it.
  const analysis::Schedule& Schedule();

  cli::PlotLane drawn;
  timeline::Spans gaps;                         // those of the lane, as rows draw them
  std::vector<analysis::TaskIndex> byPriority;  // all tasks

 private:
  std::unique_ptr<analysis::Schedule> schedule_;
};

class Recording {
 public:
  // What was open before goes. Throws nothing for a lane that cannot be read: it is one of the problems.
  void Open(const std::vector<std::string>& arguments);

  const std::vector<std::unique_ptr<ViewedLane>>& Lanes() const { return lanes_; }
  ViewedLane& LaneAt(std::size_t index) const;  // throws cli::Failure
  const std::vector<cli::PlotGroup>& Groups() const { return groups_; }
  const cli::PlotGroup& GroupAt(std::size_t index) const;
  std::size_t GroupOf(std::size_t lane) const;
  const std::vector<std::string>& Problems() const { return problems_; }

  // The rows of the group that is shown; PlacedRow::lane counts in Lanes().
  std::vector<timeline::PlacedRow> rows;

 private:
  std::vector<std::unique_ptr<ViewedLane>> lanes_;
  std::vector<cli::PlotGroup> groups_;
  std::vector<std::string> problems_;
};

// The time that a call is about: keys `from`, `length` in ticks, `width` in pixels.
timeline::Window WindowOf(const Request& request);
// The task of a lane: key `task`. Throws cli::Failure when the lane has none of this number.
analysis::TaskIndex TaskOf(const Request& request, const ViewedLane& lane);

}  // namespace viewer
