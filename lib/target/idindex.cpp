// A hash table with open addressing, and a tree for what does not fit.
#include "target/idindex.h"

#include <bit>
#include <utility>

namespace {

u64 KeyOf(ETLCatType kind, u32 id) { return u64{kind} << 32 | id; }

// Whether a category has left an id. Only tasks change theirs; a timing issue is also found by a code that is
// not its id.
bool HasLeft(const _STLCategory& category, u32 id) {
  return category.GetType() == TLCatTask && category.GetId() != id;
}

}  // namespace

void IdIndex::Build(const std::vector<_STLCategory*>& categories) {
  places_.assign(std::bit_ceil(2 * categories.size() + 16), Place{});
  taken_ = 0;
  crowded_.clear();
  following_.assign(categories.size(), nullptr);
  for (std::size_t i = categories.size(); i-- > 0;) {
    _STLCategory*& first = PlaceFor(KeyOf(categories[i]->GetType(), categories[i]->GetId()));
    following_[i] = std::exchange(first, categories[i]);
  }
}

// The place that has a key or, free, may take it; null when all places near its own are taken.
IdIndex::Place* IdIndex::Probe(u64 key) {
  const std::size_t mask = places_.size() - 1;
  // Ids are often addresses: the multiplication carries all their bits into the upper ones.
  std::size_t place = static_cast<std::size_t>(key * 0x9E3779B97F4A7C15u >> 32) & mask;
  for (std::size_t i = 0; i < thresholds::probes; ++i, place = (place + 1) & mask)
    if (places_[place].key == key || places_[place].key == freeKey) return &places_[place];
  return nullptr;
}

_STLCategory** IdIndex::FindPlace(u64 key) {
  if (Place* place = Probe(key)) return place->key == key ? &place->category : nullptr;
  const auto found = crowded_.find(key);
  return found != crowded_.end() ? &found->second : nullptr;
}

_STLCategory*& IdIndex::PlaceFor(u64 key) {
  if (2 * (taken_ + 1) > places_.size()) Grow();
  Place* place = Probe(key);
  if (!place) return crowded_[key];
  if (place->key == freeKey) {
    place->key = key;
    ++taken_;
  }
  return place->category;
}

_STLCategory* IdIndex::Find(ETLCatType kind, u32 id) {
  _STLCategory** place = FindPlace(KeyOf(kind, id));
  if (!place) return nullptr;
  _STLCategory*& category = *place;
  while (category && HasLeft(*category, id))
    category = category->index < following_.size() ? following_[category->index] : nullptr;
  return category;
}

void IdIndex::Add(u32 id, _STLCategory* category) {
  _STLCategory*& place = PlaceFor(KeyOf(category->GetType(), id));
  if (!place || HasLeft(*place, id)) place = category;
}

// All keys find their places anew, for a key is looked for in the tree only where its places are taken.
void IdIndex::Grow() {
  std::vector<Place> places(2 * places_.size());
  std::map<u64, _STLCategory*> crowded;
  std::swap(places, places_);
  std::swap(crowded, crowded_);
  taken_ = 0;
  for (const auto& [key, category] : crowded) Put(key, category);
  for (const Place& place : places)
    if (place.key != freeKey) Put(place.key, place.category);
}

void IdIndex::Put(u64 key, _STLCategory* category) {
  if (Place* place = Probe(key)) {
    *place = {key, category};
    ++taken_;
  } else {
    crowded_[key] = category;
  }
}
