// Gathers one stretch of time after the other from all sections, as much as fits into a cache, and sorts it.
#include "file/recordsorter.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace {

constexpr int digitBits = thresholds::digitBits;
constexpr u64 widest = u64{1} << 62;  // ticks

}  // namespace

std::size_t RecordSorter::MakeRoom() {
  records_.Spare(thresholds::recordRoom);
  MakeRoomToSort();
  return records_.size() + records_.SpareSize();
}

void RecordSorter::Add(const Record& record) {
  if (!inSeries_ || record.timestamp < records_.back().timestamp) BeginSeries();
  *records_.Spare(1) = record;
  records_.Extend(1);
  series_.back().end = records_.size();
}

// Gathering looks at every series, so where there are many series it takes more records at once; and never
// more than there is room for.
void RecordSorter::MakeRoomToSort() {
  const std::size_t gathered = std::max(thresholds::sorted, std::bit_ceil(series_.size() + 1));
  items_.Spare(2 * std::min(gathered, records_.size() + records_.SpareSize()));
}

void RecordSorter::BeginSeries() {
  MakeRoomToSort();
  series_.push_back({task_, records_.size(), records_.size(), records_.size()});
  inSeries_ = true;
}

// Gathers the records that come next and sorts them; false when there are none left. Where more records share
// one time than can be gathered, they come in several pieces and need no sorting.
bool RecordSorter::GatherNext() {
  u64 begin = 0;
  if (!DropFinished(begin)) return false;
  while (!Gather(begin, width_) && width_ > 1) width_ = std::max<u64>(std::min(width_ / 4, dense_), 1);
  SortGathered(begin, width_);
  for (Series& series : series_) series.begin = series.gathered;
  if (itemCount_ < Capacity() / 4 && width_ < widest) width_ *= 2;
  return true;
}

// False when all records have been yielded; otherwise gives the time of the first that has not.
bool RecordSorter::DropFinished(u64& earliest) {
  series_.erase(std::remove_if(series_.begin(), series_.end(),
                               [](const Series& series) { return series.begin == series.end; }),
                series_.end());
  earliest = UINT64_MAX;
  for (const Series& series : series_) earliest = std::min(earliest, records_[series.begin].timestamp);
  return !series_.empty();
}

// Gathers the records of a stretch of time, section by section; false when not all of them fit.
bool RecordSorter::Gather(u64 begin, u64 width) {
  bool fits = true;
  itemCount_ = 0;
  for (Series& series : series_) {
    if (GatherSeries(series, begin, width)) continue;
    if (fits) NoteDensity(series, begin);
    fits = false;
  }
  return fits;
}

bool RecordSorter::GatherSeries(Series& series, u64 begin, u64 width) {
  for (series.gathered = series.begin; series.gathered < series.end; ++series.gathered) {
    const Record& record = records_[series.gathered];
    if (record.timestamp - begin >= width) break;
    if (itemCount_ == Capacity()) return false;
    items_[itemCount_++] = {record.timestamp, &record, series.task};
  }
  return true;
}

// One series that all but fills what can be gathered tells how far a stretch may reach.
void RecordSorter::NoteDensity(const Series& series, u64 begin) {
  const bool fills = series.gathered - series.begin > Capacity() / 2;
  dense_ = fills ? records_[series.gathered].timestamp - begin : UINT64_MAX;
}

// A radix sort, which keeps the order of the file among equal times; for few records its tables cost more
// than they save.
void RecordSorter::SortGathered(u64 begin, u64 width) {
  constexpr u64 digitMask = (u64{1} << digitBits) - 1;
  if (itemCount_ <= thresholds::compared) {
    std::sort(items_.begin(), items_.begin() + itemCount_, [](const Item& a, const Item& b) {
      return a.timestamp != b.timestamp ? a.timestamp < b.timestamp : a.record < b.record;
    });
    return;
  }
  const int bits = static_cast<int>(std::bit_width(width - 1));
  Item* from = items_.begin();
  Item* to = from + Capacity();
  for (int shift = 0; shift < bits; shift += digitBits) {
    u32 places[digitMask + 1] = {};
    const auto digit = [=](const Item& item) { return (item.timestamp - begin) >> shift & digitMask; };
    for (std::size_t i = 0; i < itemCount_; ++i) ++places[digit(from[i])];
    u32 place = 0;
    for (u32& next : places) next = std::exchange(place, place + next);
    for (std::size_t i = 0; i < itemCount_; ++i) to[places[digit(from[i])]++] = from[i];
    std::swap(from, to);
  }
  if (from != items_.begin()) std::copy_n(from, itemCount_, items_.begin());
}
