// The entries that an acquisition adds, until the log takes them over.
#pragma once

#include <algorithm>
#include <map>

#include "model/model.h"

// They lie in the spare room behind the held entries, which is their place if no held entry is later. Those
// read forward grow upward from a middle, those read backward downward, so both lie in the order of time.
// Where that room does not suffice they lie aside, for held entries stay where they are until the last one is
// added. Only a damaged ring or a wrap of the 64-bit time breaks the order; then a map finds the entries of a
// time.
class NewEntries {
 public:
  // Throws bad_alloc. The array must not change while entries are added.
  NewEntries(EntryArray& array, std::size_t backwardRoom, std::size_t forwardRoom)
      : array_(array),
        begin_(PlaceFor(backwardRoom + forwardRoom)),
        backward_(begin_ + backwardRoom),
        middle_(backward_),
        forward_(backward_) {}

  ~NewEntries() { array_.TrimSpare(); }
  NewEntries(const NewEntries&) = delete;
  NewEntries& operator=(const NewEntries&) = delete;

  // Calls `visit` with the new entries of a time until it returns true; returns whether it did.
  template <class Visit>
  bool VisitAt(u64 timestamp, Visit& visit) const {
    if (!ordered_) return VisitInMap(timestamp, visit);
    return VisitIn(backward_, middle_, timestamp, visit) || VisitIn(middle_, forward_, timestamp, visit);
  }

  // Adds an entry about nothing yet; throws bad_alloc only where the order of time is broken.
  _STLEntry* Add(ETLLogType type, u64 timestamp, bool forward) {
    if (ordered_ && BreaksOrder(timestamp, forward)) FileInMap();
    _STLEntry* place = forward ? forward_++ : --backward_;
    // Field by field: copying an entry just made would wait until all its fields are stored.
    place->type = type;
    place->timestamp = timestamp;
    place->slots[0] = place->slots[1] = nullptr;
    if (!ordered_) byTime_.emplace(timestamp, place);
    return place;
  }

  // Moves all to the start of their room, each series in the order of time. Entries of one time that were
  // read backward came newest first and lie in reverse, so they are in order too.
  void Close() {
    if (!ordered_) {
      std::stable_sort(backward_, middle_, CompareEntriesByTime());
      std::stable_sort(middle_, forward_, CompareEntriesByTime());
    }
    const std::ptrdiff_t gap = backward_ - begin_;
    if (gap == 0) return;
    std::move(backward_, forward_, begin_);
    backward_ -= gap;
    middle_ -= gap;
    forward_ -= gap;
  }
  NewSeries ReadBackward() const { return {backward_, middle_}; }
  NewSeries ReadForward() const { return {middle_, forward_}; }

 private:
  _STLEntry* PlaceFor(std::size_t count) {
    const bool fits = array_.empty() || array_.SpareSize() >= count;
    return (fits ? array_ : aside_).Spare(count);
  }
  // Inlined, for each record calls it twice.
  template <class Visit>
  [[gnu::always_inline]] static bool VisitIn(const _STLEntry* begin, const _STLEntry* end, u64 timestamp,
                                             Visit& visit) {
    if (begin == end || timestamp < begin->timestamp || timestamp > end[-1].timestamp) return false;
    // A record mostly lies at the border of what was read last.
    const _STLEntry* first = begin;
    if (timestamp == end[-1].timestamp)
      for (first = end - 1; first != begin && first[-1].timestamp == timestamp;) --first;
    else if (timestamp != begin->timestamp)
      first = std::lower_bound(begin, end, timestamp, CompareEntriesByTime());
    for (; first != end && first->timestamp == timestamp; ++first)
      if (visit(*first)) return true;
    return false;
  }
  template <class Visit>
  bool VisitInMap(u64 timestamp, Visit& visit) const {
    const auto [begin, end] = byTime_.equal_range(timestamp);
    return std::any_of(begin, end, [&](const auto& item) { return visit(*item.second); });
  }
  bool BreaksOrder(u64 timestamp, bool forward) const {
    if (forward) return forward_ != middle_ && timestamp < forward_[-1].timestamp;
    return backward_ != middle_ && timestamp > backward_->timestamp;
  }
  void FileInMap() {
    for (const _STLEntry* entry = backward_; entry != forward_; ++entry)
      byTime_.emplace(entry->timestamp, entry);
    ordered_ = false;
  }

  EntryArray& array_;    // of the log
  EntryArray aside_;     // has the room where the spare room of `array_` does not suffice
  _STLEntry* begin_;     // of the room
  _STLEntry* backward_;  // [backward_, middle_): read backward
  _STLEntry* middle_;
  _STLEntry* forward_;  // [middle_, forward_): read forward
  bool ordered_ = true;
  std::multimap<u64, const _STLEntry*> byTime_;
};
