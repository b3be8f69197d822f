// The entries that an acquisition adds, until the log takes them over.
#pragma once

#include <algorithm>
#include <map>

#include "model/entry.h"

// Built in the spare room of the log's array, at its place if nothing held lies later: read forward they grow
// upward from a middle, read backward downward, so that both lie there in the order of time. Only a damaged
// ring or a wrap of the 64-bit time breaks that order; then a map finds what the order no longer can.
class NewEntries {
 public:
  // Throws bad_alloc. The array must not change until Close().
  NewEntries(EntryArray& array, std::size_t backwardRoom, std::size_t forwardRoom)
      : array_(array),
        begin_(array.Spare(backwardRoom + forwardRoom)),
        backward_(begin_ + backwardRoom),
        middle_(backward_),
        forward_(backward_) {}

  ~NewEntries() { array_.TrimSpare(); }
  NewEntries(const NewEntries&) = delete;
  NewEntries& operator=(const NewEntries&) = delete;

  // Whether `matches` holds for any new entry of this time.
  template <class Matches>
  bool AnyAt(u64 timestamp, Matches matches) const {
    if (!ordered_) return AnyInMap(timestamp, matches);
    return AnyIn(backward_, middle_, timestamp, matches) || AnyIn(middle_, forward_, timestamp, matches);
  }

  // Adds an entry about nothing yet; throws bad_alloc only where the order of time is broken.
  _STLEntry* Add(ETLLogType type, u64 timestamp, bool forward) {
    if (ordered_ && BreaksOrder(timestamp, forward)) FileInMap();
    _STLEntry* place = forward ? forward_++ : --backward_;
    // Field by field: a copy of an entry just made waits until all of its fields are stored.
    place->type = type;
    place->timestamp = timestamp;
    place->slots[0] = place->slots[1] = nullptr;
    if (!ordered_) byTime_.emplace(timestamp, place);
    return place;
  }

  // Moves all to the start of the spare room, those read backward first, each in the order of time. Among
  // equal times those read backward arrived newest first and were laid down in reverse, as they should be.
  void Close() {
    if (!ordered_) {
      std::stable_sort(backward_, middle_, CompareEntriesByTime());
      std::stable_sort(middle_, forward_, CompareEntriesByTime());
    }
    std::move(backward_, forward_, begin_);
  }
  std::size_t BackwardCount() const { return static_cast<std::size_t>(middle_ - backward_); }
  std::size_t ForwardCount() const { return static_cast<std::size_t>(forward_ - middle_); }

 private:
  template <class Matches>
  static bool AnyIn(const _STLEntry* begin, const _STLEntry* end, u64 timestamp, Matches matches) {
    if (begin == end || timestamp < begin->timestamp || timestamp > end[-1].timestamp) return false;
    // The border of what was read last is where a record mostly lies.
    const _STLEntry* first = begin;
    if (timestamp == end[-1].timestamp)
      for (first = end - 1; first != begin && first[-1].timestamp == timestamp;) --first;
    else if (timestamp != begin->timestamp)
      first = std::lower_bound(begin, end, timestamp, CompareEntriesByTime());
    for (; first != end && first->timestamp == timestamp; ++first)
      if (matches(*first)) return true;
    return false;
  }
  template <class Matches>
  bool AnyInMap(u64 timestamp, Matches matches) const {
    const auto [begin, end] = byTime_.equal_range(timestamp);
    return std::any_of(begin, end, [&](const auto& item) { return matches(*item.second); });
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

  EntryArray& array_;
  _STLEntry* begin_;     // of the spare room
  _STLEntry* backward_;  // [backward_, middle_): read backward
  _STLEntry* middle_;
  _STLEntry* forward_;  // [middle_, forward_): read forward
  bool ordered_ = true;
  std::multimap<u64, const _STLEntry*> byTime_;
};
