// Finds the category of a kind and an id.
#pragma once

#include <vector>

#include "model/model.h"

// A hash table over the categories of a log. Among categories of one kind and id the one created first
// counts. It knows ids as they were when it was built: build it anew when an id has changed.
class IdIndex {
 public:
  bool IsBuilt() const { return !places_.empty(); }
  void Build(const std::vector<_STLCategory*>& categories);  // throws bad_alloc
  // Null when there is none.
  _STLCategory* Find(ETLCatType kind, u32 id) const;
  // Adds a category under an id, unless there is one.
  void Add(u32 id, _STLCategory* category);  // throws bad_alloc

 private:
  struct Place {
    u64 key;                 // kind and id
    _STLCategory* category;  // null: free
  };

  std::size_t PlaceOf(u64 key) const;
  void Grow();

  std::vector<Place> places_;  // a power of two, at most half of them taken
  std::size_t taken_ = 0;
};
