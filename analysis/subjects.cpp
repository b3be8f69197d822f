#include "subjects.h"

#include <functional>
#include <unordered_map>

namespace analysis {
namespace {

// What makes two categories of different segments the same.
struct Key {
  ETLCatType kind;
  std::string name;
  std::uint32_t number;  // priority of a task, id of a testpoint
  std::int32_t timeSlice;
  bool operator==(const Key& other) const {
    return kind == other.kind && number == other.number && timeSlice == other.timeSlice && name == other.name;
  }
};

struct KeyHash {
  std::size_t operator()(const Key& key) const {
    const std::size_t numbers = key.number * 31u + static_cast<std::uint32_t>(key.timeSlice) * 7u + key.kind;
    return std::hash<std::string>()(key.name) ^ numbers * 0x9E3779B1u;
  }
};

Key KeyOf(const tasklog::Category& category) {
  const ETLCatType kind = category.Type();
  const std::uint32_t number = kind == TLCatTask        ? category.Priority()
                               : kind == TLCatTestpoint ? category.Id()
                                                        : 0;
  return {kind, category.Name(), number, category.TimeSlice()};
}

using Numbers = std::unordered_map<Key, SubjectIndex, KeyHash>;

}  // namespace

Subjects::Subjects(const std::vector<const tasklog::Log*>& logs) {
  std::size_t count = 0;
  for (const tasklog::Log* log : logs) count += log->CategoriesCount();
  std::size_t size = 16;
  while (size < 2 * count) size *= 2;
  table_.resize(size);
  mask_ = size - 1;

  Numbers tasks;
  for (const tasklog::Log* log : logs) {
    for (const tasklog::Category category : log->Categories({.types = TL_CATS_TASKS})) {
      const auto index = static_cast<TaskIndex>(tasks_.size());
      const auto [place, isNew] = tasks.emplace(KeyOf(category), index);
      if (isNew) tasks_.push_back({category.Name(), category.Priority(), category.TimeSlice()});
      Put(category.Handle(), place->second);
    }
  }
  Numbers others;
  for (const tasklog::Log* log : logs) {
    for (const tasklog::Category category : log->Categories({.types = ~TL_CATS_TASKS})) {
      const auto index = static_cast<SubjectIndex>(tasks_.size() + markSubjects_.size());
      const auto [place, isNew] = others.emplace(KeyOf(category), index);
      if (isNew) markSubjects_.push_back({category.Type(), category.Name(), category.Id()});
      Put(category.Handle(), place->second);
    }
  }
}

void Subjects::Put(TLCategory category, SubjectIndex subject) {
  std::size_t place = Place(category);
  while (table_[place].category) place = (place + 1) & mask_;
  table_[place] = {category, subject};
}

const std::string& Subjects::NameOf(SubjectIndex subject) const {
  return IsTask(subject) ? tasks_[subject].name : MarkSubjectOf(subject).name;
}

std::vector<TaskIndex> Subjects::TasksNamed(std::string_view name) const {
  std::vector<TaskIndex> found;
  for (TaskIndex task = 0; task < tasks_.size(); ++task)
    if (tasks_[task].name == name) found.push_back(task);
  return found;
}

std::vector<SubjectIndex> Subjects::MarkSubjectsNamed(ETLCatType kind, std::string_view name) const {
  std::vector<SubjectIndex> found;
  for (std::size_t i = 0; i < markSubjects_.size(); ++i)
    if (markSubjects_[i].kind == kind && markSubjects_[i].name == name)
      found.push_back(static_cast<SubjectIndex>(tasks_.size() + i));
  return found;
}

}  // namespace analysis
