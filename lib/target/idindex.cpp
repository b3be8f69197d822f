// A hash table with open addressing, and a tree for what does not fit.
#include "target/idindex.h"

#include <bit>
#include <utility>

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
  std::size_t at = PlaceOf(key);
  for (std::size_t i = 0; i < thresholds::probes; ++i, at = (at + 1) & (places_.size() - 1))
    if (places_[at].key == key || places_[at].key == freeKey) return &places_[at];
  return nullptr;
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

// Where the task in a place has left its id, puts the next one there that has it. When all have left, it
// stays until Add() puts another there.
_STLCategory* IdIndex::Search(ETLCatType kind, u32 id) {
  const u64 key = KeyOf(kind, id);
  _STLCategory** first = nullptr;
  if (Place* place = Probe(key)) {
    if (place->key == key) first = &place->category;
  } else if (const auto found = crowded_.find(key); found != crowded_.end()) {
    first = &found->second;
  }
  if (!first) return nullptr;
  _STLCategory* category = *first;
  while (category && HasLeft(kind, *category, id)) category = following_[category->index];
  if (category) *first = category;
  return category;
}

void IdIndex::Add(u32 id, _STLCategory* category) {
  _STLCategory*& place = PlaceFor(KeyOf(category->GetType(), id));
  if (!place || HasLeft(category->GetType(), *place, id)) place = category;
}

// Puts all keys anew: a search goes on in the tree only where the places for a key are taken.
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
