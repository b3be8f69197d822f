// Recognises records of a time at which much happened.
#pragma once

#include <unordered_set>

#include "model/model.h"

// Whether a record is held already is told by the entries of its time. Those are mostly few and looked at one
// by one; where a clock stands still, or a ring is damaged, there may be as many as a ring has slots, and
// this set takes the place of the looking. It knows the ids of categories as they were: end it when one has
// changed.
class CrowdedTime {
 public:
  static constexpr std::size_t crowd = 64;  // entries of one time, above which the set is worth its cost

  bool IsAt(u64 time) const { return active_ && time == time_; }
  void Begin(u64 time) {
    End();
    active_ = true;
    time_ = time;
  }
  void End() {
    active_ = false;
    ids_.clear();
    timingIssues_.clear();
  }
  // Adds an entry of this time; throws bad_alloc.
  void Add(const _STLEntry& entry) {
    const _STLCategory* category = entry.slots[0];
    ids_.insert(KeyOf(entry.type, category ? category->GetId() : 0));
    if (entry.type == TLLogTimingIssue) timingIssues_.insert(category);
  }
  bool HasId(ETLLogType type, u32 id) const { return ids_.contains(KeyOf(type, id)); }
  bool HasTimingIssue(const _STLCategory* category) const { return timingIssues_.contains(category); }

 private:
  static u64 KeyOf(ETLLogType type, u32 id) { return u64{type} << 32 | id; }

  bool active_ = false;
  u64 time_ = 0;
  std::unordered_set<u64> ids_;  // with their types
  std::unordered_set<const _STLCategory*> timingIssues_;
};
