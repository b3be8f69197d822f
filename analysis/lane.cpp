#include "lane.h"

#include <algorithm>

#include "cursor.h"

namespace analysis {
namespace {

// The whole log. Entries may lie outside the period that a file states; the lane's period covers them.
Lane::Segment WholeOf(const tasklog::Log& log) {
  Lane::Segment segment{&log, std::min(log.StartTime(), log.StopTime()),
                        std::max(log.StartTime(), log.StopTime()), false};
  for (const tasklog::Entry entry : log.Entries()) {
    segment.from = std::min(segment.from, entry.Timestamp());
    break;  // the first is the earliest
  }
  for (const tasklog::Entry entry : log.Entries({.from = segment.to}))
    segment.to = std::max(segment.to, entry.Timestamp());
  return segment;
}

bool IsEmpty(const Lane::Segment& segment) {
  return segment.from == segment.to && segment.log->EntriesCount() == 0;
}

}  // namespace

Lane::Lane(std::vector<const tasklog::Log*> logs, std::vector<Gap> gaps)
    : names_(std::make_shared<const Subjects>(logs)) {
  std::vector<Segment> whole;
  for (const tasklog::Log* log : logs) {
    whole.push_back(WholeOf(*log));
    const std::uint64_t rate = log->TicksPerSecond();
    ratesDiffer_ |= rate != 0 && ticksPerSecond_ != 0 && rate != ticksPerSecond_;
    if (ticksPerSecond_ == 0) ticksPerSecond_ = rate;
  }
  AddSegments(std::move(whole));
  AddGaps(std::move(gaps));
}

void Lane::AddSegments(std::vector<Segment> whole) {
  const auto filled = std::stable_partition(whole.begin(), whole.end(), IsEmpty);
  if (filled != whole.end()) whole.erase(whole.begin(), filled);
  std::stable_sort(whole.begin(), whole.end(), [](const Segment& a, const Segment& b) {
    return a.from != b.from ? a.from < b.from : a.to > b.to;
  });
  for (const Segment& segment : whole) {
    if (segments_.empty()) {
      start_ = segment.from;
      segments_.push_back(segment);
    } else if (segment.from > stop_) {
      gaps_.push_back({stop_, segment.from});
      segments_.push_back(segment);
    } else if (segment.to > stop_) {
      segments_.push_back({segment.log, stop_, segment.to, true});
    }
    stop_ = std::max(stop_, segment.to);
  }
}

// Gaps that touch stay apart: the records between them belong to the log.
void Lane::AddGaps(std::vector<Gap> gaps) {
  gaps.insert(gaps.end(), gaps_.begin(), gaps_.end());
  gaps_.clear();
  std::sort(gaps.begin(), gaps.end(),
            [](const Gap& a, const Gap& b) { return a.from != b.from ? a.from < b.from : a.to < b.to; });
  for (Gap gap : gaps) {
    if (gap.from > gap.to || gap.to <= start_ || gap.from >= stop_) continue;
    gap = {std::max(gap.from, start_), std::min(gap.to, stop_)};
    if (!gaps_.empty() && (gap.from < gaps_.back().to || gap == gaps_.back()))
      gaps_.back().to = std::max(gaps_.back().to, gap.to);
    else
      gaps_.push_back(gap);
  }
}

Lane Lane::Between(Ticks from, Ticks to) const {
  Lane part = Part(from, to);
  if (part.start_ == start_) return part;
  part.beginsLog_ = false;
  // Behind the last loss of records, a switch before the part tells who runs.
  Ticks knownFrom = start_;
  bool lost = !knowsWhoRan_;
  for (const Gap& gap : gaps_) {
    if (gap.from >= part.start_) break;
    knownFrom = gap.to;
    lost = true;
  }
  if (!lost) return part;
  const Lane before = Part(knownFrom, part.start_ - 1);
  part.knowsWhoRan_ = Cursor(before, TL_LOGS_SWITCHES).Next();
  return part;
}

Lane Lane::Part(Ticks from, Ticks to) const {
  Lane part = *this;
  part.start_ = std::min(std::max(start_, from), stop_);
  part.stop_ = std::max(std::min(stop_, to), part.start_);
  part.segments_.clear();
  part.gaps_.clear();
  if (from > to || from > stop_ || to < start_) return part;
  for (Segment segment : segments_) {
    if (segment.to < part.start_ || segment.from > part.stop_) continue;
    segment.sharesFirst &= segment.from >= part.start_;
    segment.from = std::max(segment.from, part.start_);
    segment.to = std::min(segment.to, part.stop_);
    part.segments_.push_back(segment);
  }
  part.AddGaps(gaps_);
  return part;
}

Ticks Lane::TicksInGaps() const {
  Ticks sum = 0;
  for (const Gap& gap : gaps_) sum += gap.to - gap.from;
  return sum;
}

double Lane::Coverage() const {
  return Length() == 0 ? 1 : static_cast<double>(CoveredTicks()) / static_cast<double>(Length());
}

}  // namespace analysis
