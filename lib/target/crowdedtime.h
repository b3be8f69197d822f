// Recognises records of a time at which much happened.
#pragma once

#include <map>
#include <set>
#include <utility>

#include "model/model.h"

// The entries of a record's time tell whether the log has it already. They are mostly few, and KnownEntries
// looks at them one by one. Where a clock stands still, or a ring is damaged, a ring may hold nothing else;
// then it looks into these sets. They are ordered, for no choice of ids makes an ordered set slow. When the
// id of a task changes, call ChangeTaskId(); when any ids may have changed, End().
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
