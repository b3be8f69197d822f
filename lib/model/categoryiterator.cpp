// Walks the categories that a query selects.
#include "model/model.h"

_STLCategoryIterator::~_STLCategoryIterator() = default;

const _STLCategory* STLCategoryIteratorVec::Next() {
  while (current_ != end_) {
    const _STLCategory* category = *current_++;
    if (matches_(*category)) return category;
  }
  return nullptr;
}

const _STLCategory* STLCategoryIteratorMap::Next() {
  while (current_ != end_) {
    const _STLCategory* category = (current_++)->second;
    if (matches_(*category)) return category;
  }
  return nullptr;
}
