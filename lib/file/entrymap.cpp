// Collects the records of a file and brings them into the order of time.
#include "file/entrymap.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace {

constexpr std::size_t fewestItems = 4096;  // gathered at once: few enough to stay in a cache
constexpr int digitBits = 11;

}  // namespace

void _STLTaskLog::EntryMap::BeginSection(STLTask* task) {
  if (task && idMarks_.size() <= task->index) idMarks_.resize(task->index + 1);
  task_ = task;
  inRun_ = false;
}

void _STLTaskLog::EntryMap::Add(const Record& record) {
  if (records_.SpareSize() == 0) {
    records_.Spare(1024);
    log_.entries.Spare(records_.size() + records_.SpareSize());  // each record makes one entry at most
  }
  if (!inRun_ || record.timestamp < records_.back().timestamp) BeginRun();
  *records_.end() = record;
  records_.Extend(1);
  runs_.back().end = records_.size();
}

// Where there are many runs, each of which is looked at whenever records are gathered, more are gathered.
void _STLTaskLog::EntryMap::BeginRun() {
  const std::size_t needed = 2 * std::max(fewestItems, std::bit_ceil(runs_.size() + 1));
  if (items_.size() < needed) items_.resize(needed);
  runs_.push_back({task_, records_.size(), records_.size(), records_.size()});
  inRun_ = true;
}

// Takes a stretch of time after the other, as long as its records fit.
std::size_t _STLTaskLog::EntryMap::Pair() {
  first_ = last_ = log_.entries.end();
  u64 width = u64{1} << 20;  // ticks
  for (u64 begin; DropFinishedRuns(begin);) {
    if (width == 1) {
      PairOneTime(begin);
    } else if (Gather(begin, width)) {
      SortGathered(begin, width);
      PairGathered();
    } else {
      width /= 4;
      continue;
    }
    if (itemCount_ < items_.size() / 8 && width < u64{1} << 62) width *= 2;
  }
  SetTaskIds();
  return static_cast<std::size_t>(last_ - first_);
}

// False when all records are paired; otherwise gives the time of the first that is not.
bool _STLTaskLog::EntryMap::DropFinishedRuns(u64& earliest) {
  std::erase_if(runs_, [](const Run& run) { return run.begin == run.end; });
  earliest = UINT64_MAX;
  for (const Run& run : runs_) earliest = std::min(earliest, records_[run.begin].timestamp);
  return !runs_.empty();
}

// Gathers the records of a stretch of time, section by section; false when they do not fit.
bool _STLTaskLog::EntryMap::Gather(u64 begin, u64 width) {
  const std::size_t capacity = items_.size() / 2;
  itemCount_ = 0;
  for (Run& run : runs_) {
    std::size_t i = run.begin;
    for (; i < run.end && records_[i].timestamp - begin < width; ++i) {
      if (itemCount_ == capacity) return false;
      items_[itemCount_++] = {records_[i].timestamp, &records_[i], run.task};
    }
    run.gathered = i;
  }
  return true;
}

// A radix sort, which keeps the order of the file among equal times.
void _STLTaskLog::EntryMap::SortGathered(u64 begin, u64 width) {
  constexpr u64 digitMask = (u64{1} << digitBits) - 1;
  const int bits = static_cast<int>(std::bit_width(width - 1));
  Item* from = items_.data();
  Item* to = from + items_.size() / 2;
  for (int shift = 0; shift < bits; shift += digitBits) {
    u32 places[digitMask + 1] = {};
    const auto digit = [=](const Item& item) { return (item.timestamp - begin) >> shift & digitMask; };
    for (std::size_t i = 0; i < itemCount_; ++i) ++places[digit(from[i])];
    u32 place = 0;
    for (u32& next : places) next = std::exchange(place, place + next);
    for (std::size_t i = 0; i < itemCount_; ++i) to[places[digit(from[i])]++] = from[i];
    std::swap(from, to);
  }
  if (from != items_.data()) std::copy_n(from, itemCount_, items_.data());
}

void _STLTaskLog::EntryMap::PairGathered() {
  for (std::size_t i = 0; i < itemCount_; ++i) PairRecord(*items_[i].record, items_[i].task);
  for (Run& run : runs_) run.begin = run.gathered;
}

// For more records of one time than can be gathered: they need no sorting.
void _STLTaskLog::EntryMap::PairOneTime(u64 timestamp) {
  itemCount_ = 0;
  for (Run& run : runs_)
    for (; run.begin < run.end && records_[run.begin].timestamp == timestamp; ++run.begin, ++itemCount_)
      PairRecord(records_[run.begin], run.task);
}
