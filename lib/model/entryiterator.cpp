// Walks the entries that a query selects.
#include "model/model.h"

const _STLEntry* _STLEntryIterator::Next() {
  while (current_ != end_) {
    const _STLEntry& entry = *current_++;
    if (matches_(entry)) return &entry;
  }
  return nullptr;
}
