// A hash table with open addressing.
#include "target/idindex.h"

#include <bit>
#include <utility>

namespace {

u64 KeyOf(ETLCatType kind, u32 id) { return u64{kind} << 32 | id; }

}  // namespace

void IdIndex::Build(const std::vector<_STLCategory*>& categories) {
  places_.assign(std::bit_ceil(2 * categories.size() + 16), Place{});
  taken_ = 0;
  for (_STLCategory* category : categories) Add(category->GetId(), category);
}

// Where a key is, or the free place where it would be.
std::size_t IdIndex::PlaceOf(u64 key) const {
  const std::size_t mask = places_.size() - 1;
  // Ids are often addresses: the multiplication carries all their bits into the upper ones.
  std::size_t place = static_cast<std::size_t>(key * 0x9E3779B97F4A7C15u >> 32) & mask;
  while (places_[place].category && places_[place].key != key) place = (place + 1) & mask;
  return place;
}

_STLCategory* IdIndex::Find(ETLCatType kind, u32 id) const {
  return places_[PlaceOf(KeyOf(kind, id))].category;
}

void IdIndex::Add(u32 id, _STLCategory* category) {
  if (2 * (taken_ + 1) > places_.size()) Grow();
  const u64 key = KeyOf(category->GetType(), id);
  Place& place = places_[PlaceOf(key)];
  if (place.category) return;
  place = {key, category};
  ++taken_;
}

void IdIndex::Grow() {
  std::vector<Place> smaller(2 * places_.size());
  std::swap(smaller, places_);
  for (const Place& place : smaller)
    if (place.category) places_[PlaceOf(place.key)] = place;
}
