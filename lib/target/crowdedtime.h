// Recognises records of a time at which much happened.
#pragma once

#include <map>
#include <set>
#include <utility>

#include "model/model.h"

// Whether a record is held already is told by the entries of its time. Those are mostly few and looked at one
// by one; where a clock stands still, or a ring is damaged, there may be as many as a ring has slots, and
// these sets take the place of the looking. They are ordered, for no choice of ids makes such a set slow.
// When ids change, call ChangeTaskId(), or End() where it is not known which.
class CrowdedTime {
 public:
  bool IsAt(u64 time) const { return active_ && time == time_; }
  void Begin(u64 time) {
    End();
    active_ = true;
    time_ = time;
  }
  void End() {
    active_ = false;
    categories_.clear();
    ids_.clear();
  }
  // Adds an entry of this time; throws bad_alloc.
  void Add(const _STLEntry& entry) {
    const _STLCategory* category = entry.slots[0];
    if (categories_.emplace(category, entry.type).second)
      ++ids_[{entry.type, category ? category->GetId() : 0}];
  }
  // Follows a task that is now known by another id; throws bad_alloc.
  void ChangeTaskId(const STLTask& task, u32 former) {
    for (auto at = categories_.lower_bound({&task, 0}); at != categories_.end() && at->first == &task; ++at) {
      ++ids_[{at->second, task.id}];
      --ids_[{at->second, former}];
    }
  }
  bool HasId(ETLLogType type, u32 id) const {
    const auto found = ids_.find({type, id});
    return found != ids_.end() && found->second > 0;
  }
  bool Has(ETLLogType type, const _STLCategory* category) const {
    return categories_.find({category, type}) != categories_.end();
  }

 private:
  bool active_ = false;
  u64 time_ = 0;
  std::set<std::pair<const _STLCategory*, ETLLogType>> categories_;  // with the types of their entries
  std::map<std::pair<ETLLogType, u32>, u32> ids_;  // how many of these categories have an id
};
