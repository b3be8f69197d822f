// Finds, makes and lists the categories of a log, which owns them.
#include <algorithm>
#include <memory>

#include "model/model.h"

namespace {

constexpr u64 allKinds = TL_CATS_ALL;

}  // namespace

CategoryKey::CategoryKey(const _STLCategory& category)
    : CategoryKey(category.name, category.GetType(), category.GetPriority()) {
  if (category.GetType() == TLCatTask) properties[2] = static_cast<u32>(category.GetTimeSlice());
  if (category.GetType() == TLCatTestpoint) properties[1] = category.GetId();
}

_STLTaskLog::~_STLTaskLog() {
  for (_STLCategory* category : categories) delete category;
}

template <class Category>
Category* _STLTaskLog::Find(const CategoryKey& key) const {
  const auto found = categoriesByKey_.find(key);
  return found != categoriesByKey_.end() ? static_cast<Category*>(found->second) : nullptr;
}

// Whatever fails, all containers hold the same categories.
template <class Category, class... Properties>
Category* _STLTaskLog::FindOrCreate(const CategoryKey& key, const std::string& name,
                                    Properties... properties) {
  if (Category* known = Find<Category>(key)) return known;

  auto created = std::make_unique<Category>(name, properties...);
  created->index = static_cast<u32>(categories.size());
  if (categories.size() == categories.capacity()) categories.reserve(2 * categories.size() + 8);
  const auto named = categoriesByName.emplace(name, created.get());
  try {
    categoriesByKey_.emplace(*created, created.get());
  } catch (...) {
    categoriesByName.erase(named);
    throw;
  }
  categories.push_back(created.get());
  return created.release();
}

STLTask* _STLTaskLog::FindOrCreateTask(const std::string& name, u32 priority, i32 timeSlice) {
  const CategoryKey key(name, TLCatTask, priority, static_cast<u32>(timeSlice));
  return FindOrCreate<STLTask>(key, name, priority, timeSlice);
}

STLTestpoint* _STLTaskLog::FindOrCreateTestpoint(const std::string& name, u32 id) {
  return FindOrCreate<STLTestpoint>(CategoryKey(name, TLCatTestpoint, id), name, id);
}

STLTimingIssue* _STLTaskLog::FindTimingIssue(const std::string& name) const {
  return Find<STLTimingIssue>(CategoryKey(name, TLCatTimingIssue));
}

STLTimingIssue* _STLTaskLog::FindOrCreateTimingIssue(const std::string& name) {
  return FindOrCreate<STLTimingIssue>(CategoryKey(name, TLCatTimingIssue), name);
}

_STLCategoryIterator* _STLTaskLog::GetCategories(u64 types, const char* name) const {
  if (types == 0) types = allKinds;
  if (!name) return new STLCategoryIteratorVec(categories.begin(), categories.end(), {types});
  const auto [begin, end] = categoriesByName.equal_range(std::string_view(name));
  return new STLCategoryIteratorMap(begin, end, {types});
}

u32 _STLTaskLog::GetCategoriesCount(u64 types, const char* name) const {
  const bool all = types == 0 || (types & allKinds) == allKinds;
  if (!name) {
    if (all) return static_cast<u32>(categories.size());
    const STLCategoryIteratorVec::Matches matches{types};
    return static_cast<u32>(
        std::count_if(categories.begin(), categories.end(), [&](auto* item) { return matches(*item); }));
  }
  const auto [begin, end] = categoriesByName.equal_range(std::string_view(name));
  if (all) return static_cast<u32>(std::distance(begin, end));
  const STLCategoryIteratorMap::Matches matches{types};
  return static_cast<u32>(std::count_if(begin, end, [&](auto& item) { return matches(*item.second); }));
}
