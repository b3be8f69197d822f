// What the page has open: lanes, in groups that share a time axis, and the rows it shows.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "analysis/schedule.h"
#include "call.h"
#include "cli/plotlanes.h"
#include "timeline/rows.h"
#include "timeline/window.h"

namespace viewer {

// A testpoint or timing issue, by its number in the marks of its row.
struct SubjectMark {
  Ticks time;
  std::size_t index;
};

// A lane of the recording with what is made of it on demand.
class ViewedLane {
 public:
  explicit ViewedLane(cli::AnalysedLane analysed);

  const cli::AnalysedLane& Of() const { return drawn.of; }
  const timeline::Tracks& Tracks() const { return drawn.tracks; }
  // For findings and the parts of jobs; the first use makes it.
  const analysis::Schedule& Schedule();
  // All of a testpoint or timing issue, by time. The first use looks at all marks; one subject's are kept.
  const std::vector<SubjectMark>& MarksOf(analysis::SubjectIndex subject);
  // The share of the known time from `from` to `to` that a task has, and that all but the idle task have; NaN
  // where nothing is known, or nobody is known to be idle.
  double LoadOf(analysis::TaskIndex task, Ticks from, Ticks to) const;
  double BusyShare(Ticks from, Ticks to) const;

  cli::PlotLane drawn;
  timeline::Spans gaps;                         // those of the lane, as rows draw them
  std::vector<analysis::TaskIndex> byPriority;  // all tasks

 private:
  std::unique_ptr<analysis::Schedule> schedule_;
  analysis::SubjectIndex subject_ = analysis::noSubject;  // of these
  std::vector<SubjectMark> marks_;
};

class Recording {
 public:
  // What was open before goes, unless this adds to it. Throws nothing for a lane that cannot be read: it is
  // one of the problems.
  void Open(const std::vector<std::string>& arguments, bool adds);
  // Lanes are in one group when their times can be compared; with `separately` those of different arguments
  // are not.
  void Group(bool separately);

  const std::vector<std::unique_ptr<ViewedLane>>& Lanes() const { return lanes_; }
  ViewedLane& LaneAt(std::size_t index) const;  // throws cli::Failure
  const std::vector<cli::PlotGroup>& Groups() const { return groups_; }
  const cli::PlotGroup& GroupAt(std::size_t index) const;
  std::size_t GroupOf(std::size_t lane) const { return groupOf_[lane]; }
  const std::vector<std::string>& Arguments() const { return arguments_; }
  std::size_t ArgumentOf(std::size_t lane) const { return argumentOf_[lane]; }
  const std::vector<std::string>& Problems() const { return problems_; }

  // The rows that a picture shows, of which there are two: key `pane`, 0 without it. PlacedRow::lane counts
  // in Lanes().
  std::vector<timeline::PlacedRow>& RowsOf(const Request& request);

 private:
  void AddLane(std::unique_ptr<ViewedLane> lane, std::size_t firstArgument);

  std::array<std::vector<timeline::PlacedRow>, 2> rows_;
  std::vector<std::unique_ptr<ViewedLane>> lanes_;
  std::vector<std::string> arguments_;
  std::vector<std::size_t> argumentOf_;  // by lane
  std::vector<cli::PlotGroup> groups_;
  std::vector<std::size_t> groupOf_;  // by lane
  std::vector<std::string> problems_;
};

// The time that a call is about: keys `from`, `length` in ticks, `width` in pixels.
timeline::Window WindowOf(const Request& request);
// The task of a lane: key `task`. Throws cli::Failure when the lane has none of this number.
analysis::TaskIndex TaskOf(const Request& request, const ViewedLane& lane);

}  // namespace viewer
