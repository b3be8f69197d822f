// A lane: the log of one processor, of one file or of several segments in order, with the gaps that are
// known. What analyses a log reads it through a lane.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

#include "subjects.h"

namespace analysis {

using Ticks = std::uint64_t;

// A stretch in which records were lost: from the time of the last record before it to that of the first
// behind it. Both records belong to the log.
struct Gap {
  Ticks from = 0;
  Ticks to = 0;
  bool operator==(const Gap&) const = default;
};

class Lane {
 public:
  // What one segment adds: its entries from `from` to `to`, both included.
  struct Segment {
    const tasklog::Log* log;  // borrowed
    Ticks from;
    Ticks to;
    bool sharesFirst;  // entries at `from` count only as far as the segment before lacks them
  };

  // Borrows the logs: they must neither change nor go while the lane is in use. Their order does not matter;
  // what two of them share counts once, and what lies between two is a gap, beside `gaps`, which may come in
  // any order and overlap. Without logs it is a lane without entries.
  explicit Lane(std::vector<const tasklog::Log*> logs, std::vector<Gap> gaps = {});

  // The part from `from` to `to`, both included: the period is cut as if the log ended there.
  Lane Between(Ticks from, Ticks to) const;

  Ticks StartTime() const { return start_; }
  Ticks StopTime() const { return stop_; }
  Ticks Length() const { return stop_ - start_; }
  std::uint64_t TicksPerSecond() const { return ticksPerSecond_; }  // 0: unknown
  bool RatesDiffer() const { return ratesDiffer_; }  // of two logs with a known rate: they are no lane

  const std::vector<Gap>& Gaps() const { return gaps_; }  // by time, within the period; they do not overlap
  Ticks TicksInGaps() const;
  Ticks CoveredTicks() const { return Length() - TicksInGaps(); }
  double Coverage() const;  // 0 to 1; of an empty period 1

  const Subjects& Names() const { return *names_; }
  const std::vector<Task>& Tasks() const { return names_->Tasks(); }

  // For cursors.
  const std::vector<Segment>& Segments() const { return segments_; }
  bool BeginsLog() const { return beginsLog_; }  // not a part that begins later
  // Whether slot 1 of the first switch tells who ran at the start: not when records were lost before it.
  bool KnowsWhoRan() const { return knowsWhoRan_; }

 private:
  Lane Part(Ticks from, Ticks to) const;
  void AddSegments(std::vector<Segment> whole);
  void AddGaps(std::vector<Gap> gaps);

  std::vector<Segment> segments_;
  std::vector<Gap> gaps_;
  std::shared_ptr<const Subjects> names_;
  Ticks start_ = 0;
  Ticks stop_ = 0;
  std::uint64_t ticksPerSecond_ = 0;
  bool ratesDiffer_ = false;
  bool beginsLog_ = true;
  bool knowsWhoRan_ = true;
};

}  // namespace analysis
