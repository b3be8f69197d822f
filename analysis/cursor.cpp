#include "cursor.h"

#include <new>

namespace analysis {
namespace {

TLEntryIterator Open(const Lane::Segment& segment, std::uint64_t types) {
  const TLEntryIterator iterator =
      TLTaskLogGetEntries(segment.log->Handle(), nullptr, types, segment.from, segment.to);
  if (!iterator) throw std::bad_alloc();
  return iterator;
}

}  // namespace

bool Cursor::OpenSegment() {
  if (nextSegment_ == lane_.Segments().size()) return false;
  const Lane::Segment& segment = lane_.Segments()[nextSegment_];
  shared_.clear();
  if (segment.sharesFirst && nextSegment_ > 0) CountShared(lane_.Segments()[nextSegment_ - 1]);
  ++nextSegment_;
  from_ = segment.from;
  to_ = segment.to;
  iterator_ = Iterator(Open(segment, types_));
  return true;
}

void Cursor::CountShared(const Lane::Segment& before) {
  sharedTime_ = before.to;
  iterator_ = Iterator(Open({before.log, before.to, before.to, false}, types_));
  while (const TLEntry entry = TLEntryIteratorNext(iterator_.get()))
    if (TLEntryGetTimestamp(entry) == sharedTime_) ++shared_[KeyOf(entry)];
}

// Two segments may give the same switch two types: a segment's first switch does not know what it was.
std::uint64_t Cursor::KeyOf(TLEntry entry) const {
  const ETLLogType type = TLEntryGetType(entry);
  const bool isSwitch = (TL_LOGS_SWITCHES >> type) & 1;
  return std::uint64_t{isSwitch ? TL_LOGS_SWITCHES : type} << 32 | SlotOf(entry, 0);
}

bool Cursor::WasThere() {
  const auto place = shared_.find(KeyOf(entry_));
  if (place == shared_.end() || place->second == 0) return false;
  --place->second;
  return true;
}

}  // namespace analysis
