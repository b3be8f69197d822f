// The kinds of category, and the iterators over them.
#include "model/model.h"

_STLCategory::~_STLCategory() = default;

u32 _STLCategory::GetPriority() const { return 0; }

i32 _STLCategory::GetTimeSlice() const { return 0; }

ETLCatType STLTask::GetType() const { return TLCatTask; }

u32 STLTask::GetPriority() const { return priority; }

i32 STLTask::GetTimeSlice() const { return timeSlice; }

u32 STLTask::GetId() const { return id; }

ETLCatType STLTestpoint::GetType() const { return TLCatTestpoint; }

u32 STLTestpoint::GetId() const { return id; }

ETLCatType STLTimingIssue::GetType() const { return TLCatTimingIssue; }

// The inverse of how a record's code becomes a name; names read from a file may be shorter than a code.
u32 STLTimingIssue::GetId() const {
  u32 id = 0;
  for (std::size_t i = 0; i < 4; ++i) id = id << 8 | (i < name.size() ? static_cast<u8>(name[i]) : 0u);
  return id;
}

_STLCategoryIterator::~_STLCategoryIterator() = default;

namespace {

const _STLCategory* CategoryAt(STLCategoryIteratorVec::Position position) { return *position; }
const _STLCategory* CategoryAt(STLCategoryIteratorMap::Position position) { return position->second; }

}  // namespace

template <class Position>
const _STLCategory* CategoryWalk<Position>::Next() {
  while (current_ != end_) {
    const _STLCategory* category = CategoryAt(current_++);
    if (matches_(*category)) return category;
  }
  return nullptr;
}

template class CategoryWalk<STLCategoryIteratorVec::Position>;
template class CategoryWalk<STLCategoryIteratorMap::Position>;
