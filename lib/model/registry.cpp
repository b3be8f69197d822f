// Finds, makes and lists the categories of a log.
#include <algorithm>
#include <memory>
#include <string_view>

#include "model/model.h"

namespace {

constexpr u64 allKinds = TL_CATS_ALL;

bool IsTimingIssue(const _STLCategory& category) { return category.GetType() == TLCatTimingIssue; }

}  // namespace

// `same` tells whether a category of the name is the one wanted.
template <class Category, class Same>
Category* _STLTaskLog::Find(const std::string& name, Same same) const {
  const auto [begin, end] = categoriesByName.equal_range(name);
  const auto found = std::find_if(begin, end, [&](const auto& item) { return same(*item.second); });
  return found != end ? static_cast<Category*>(found->second) : nullptr;
}

// Memory is obtained before either container changes, so that both hold the same categories whatever fails.
template <class Category, class Same, class... Properties>
Category* _STLTaskLog::FindOrCreate(const std::string& name, Same same, Properties... properties) {
  if (Category* known = Find<Category>(name, same)) return known;

  auto created = std::make_unique<Category>(name, properties...);
  created->index = static_cast<u32>(categories.size());
  if (categories.size() == categories.capacity()) categories.reserve(2 * categories.size() + 8);
  categoriesByName.emplace(name, created.get());
  categories.push_back(created.get());
  return created.release();
}

STLTask* _STLTaskLog::FindOrCreateTask(const std::string& name, u32 priority, i32 timeSlice) {
  const auto same = [=](const _STLCategory& category) {
    return category.GetType() == TLCatTask && category.GetPriority() == priority &&
           category.GetTimeSlice() == timeSlice;
  };
  return FindOrCreate<STLTask>(name, same, priority, timeSlice);
}

STLTestpoint* _STLTaskLog::FindOrCreateTestpoint(const std::string& name, u32 id) {
  const auto same = [=](const _STLCategory& category) {
    return category.GetType() == TLCatTestpoint && category.GetId() == id;
  };
  return FindOrCreate<STLTestpoint>(name, same, id);
}

STLTimingIssue* _STLTaskLog::FindTimingIssue(const std::string& name) const {
  return Find<STLTimingIssue>(name, IsTimingIssue);
}

STLTimingIssue* _STLTaskLog::FindOrCreateTimingIssue(const std::string& name) {
  return FindOrCreate<STLTimingIssue>(name, IsTimingIssue);
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
