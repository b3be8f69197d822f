// The entries of a file while it is read, by timestamp.
#pragma once

#include <map>

#include "model/model.h"

// Entries of one timestamp keep the order in which they were inserted.
class _STLTaskLog::EntryMap {
 public:
  _STLEntry* Insert(const _STLEntry& entry) { return &entries_.emplace(entry.timestamp, entry)->second; }
  // Pairs the two records of one entry: the first entry of the timestamp whose slot (0 or 1) is empty; a new
  // one of type 4 when there is none. Valid while the map lives.
  _STLEntry* FindOrCreateEntryWithEmptyTask(u64 timestamp, u32 slot);

  std::size_t Size() const { return entries_.size(); }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }

 private:
  std::multimap<u64, _STLEntry> entries_;
};
