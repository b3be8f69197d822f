// Finds the category of a kind and an id.
#pragma once

#include <map>
#include <vector>

#include "model/model.h"

// A hash table over the categories of a log. Of several of one kind and id it finds the one created first.
// Ids that collide beyond a few places go into a tree, so that no choice of ids makes it slow. A task that
// was there when the table was built may change its id once, to one that no task has; add it then. After any
// other change of ids build the table anew.
class IdIndex {
 public:
  bool IsBuilt() const { return !places_.empty(); }
  void Build(const std::vector<_STLCategory*>& categories);  // throws bad_alloc
  // Null when there is none; add one before the next search for it. Mostly one of the first places for an id
  // has it.
  _STLCategory* Find(ETLCatType kind, u32 id) {
    const u64 key = KeyOf(kind, id);
    std::size_t at = PlaceOf(key);
    for (std::size_t i = 0; i < thresholds::probes && places_[at].key != freeKey; ++i) {
      const Place& place = places_[at];
      if (place.key == key && !HasLeft(kind, *place.category, id)) [[likely]]
        return place.category;
      at = (at + 1) & (places_.size() - 1);
    }
    return Search(kind, id);
  }
  // Adds a category under an id, unless there is one.
  void Add(u32 id, _STLCategory* category);  // throws bad_alloc

 private:
  static constexpr u64 freeKey = UINT64_MAX;
  struct Place {
    u64 key = freeKey;                 // kind and id
    _STLCategory* category = nullptr;  // the first of them; null only where the place is free
  };

  static u64 KeyOf(ETLCatType kind, u32 id) { return u64{kind} << 32 | id; }
  // Whether a category has left an id. Only tasks change theirs; a timing issue is also found by a code that
  // is not its id.
  static bool HasLeft(ETLCatType kind, const _STLCategory& category, u32 id) {
    return kind == TLCatTask && static_cast<const STLTask&>(category).id != id;
  }
  // Ids are often addresses: the multiplication carries all their bits into the upper ones.
  std::size_t PlaceOf(u64 key) const {
    return static_cast<std::size_t>(key * 0x9E3779B97F4A7C15u >> 32) & (places_.size() - 1);
  }
  _STLCategory* Search(ETLCatType kind, u32 id);
  _STLCategory*& PlaceFor(u64 key);  // throws bad_alloc
  Place* Probe(u64 key);
  void Grow();
  void Put(u64 key, _STLCategory* category);  // a key that is not there

  std::vector<Place> places_;  // a power of two, at most half of them taken
  std::size_t taken_ = 0;
  std::map<u64, _STLCategory*> crowded_;  // keys for which there was no place near their own
  std::vector<_STLCategory*> following_;  // by category index: the next one that had the same id
};
