// Goes over the entries of a lane, in order of time, without copying them.
#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>
#include <unordered_map>

#include "lane.h"

namespace analysis {

class Cursor {
 public:
  // Bit n of `types` keeps type n. The lane must outlive the cursor.
  explicit Cursor(const Lane& lane, std::uint64_t types = TL_LOGS_ALL)
      : lane_(lane), names_(lane.Names()), types_(types) {}

  // To the next entry, at first to the first one; false behind the last.
  bool Next() {
    while (iterator_ || OpenSegment()) {
      entry_ = TLEntryIteratorNext(iterator_.get());
      if (!entry_) {
        iterator_ = nullptr;
        continue;
      }
      time_ = TLEntryGetTimestamp(entry_);
      if (time_ < from_) continue;
      if (time_ > to_) {
        iterator_ = nullptr;
        continue;
      }
      if (time_ == sharedTime_ && !shared_.empty() && WasThere()) continue;
      return true;
    }
    return false;
  }

  TLEntry Handle() const { return entry_; }
  Ticks Time() const { return time_; }
  ETLLogType Type() const { return TLEntryGetType(entry_); }
  SubjectIndex Slot(std::uint32_t slot) const { return SlotOf(entry_, slot); }
  SubjectIndex SlotOf(TLEntry entry, std::uint32_t slot) const {
    return names_.Find(TLEntryGetCategory(entry, slot));
  }

 private:
  struct Destroy {
    void operator()(TLEntryIterator iterator) const { TLEntryIteratorDestroy(iterator); }
  };
  using Iterator = std::unique_ptr<std::remove_pointer_t<TLEntryIterator>, Destroy>;

  bool OpenSegment();
  void CountShared(const Lane::Segment& before);
  bool WasThere();
  std::uint64_t KeyOf(TLEntry entry) const;

  const Lane& lane_;
  const Subjects& names_;
  std::uint64_t types_;
  std::size_t nextSegment_ = 0;
  Iterator iterator_;
  Ticks from_ = 0;
  Ticks to_ = 0;
  TLEntry entry_ = nullptr;
  Ticks time_ = 0;
  // Entries of the segment before at the tick that it shares with this one, by what makes them equal.
  Ticks sharedTime_ = 0;
  std::unordered_map<std::uint64_t, std::uint64_t> shared_;
};

}  // namespace analysis
