// What the entries of a lane are about, numbered: tasks first, then testpoints and timing issues. A task that
// stands in several segments has one number.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tasklog/tasklog.hpp>
#include <vector>

namespace analysis {

// The number of a subject. Those of tasks begin at 0 and index Subjects::Tasks().
using SubjectIndex = std::uint32_t;
using TaskIndex = SubjectIndex;
inline constexpr SubjectIndex noSubject = UINT32_MAX;
inline constexpr TaskIndex noTask = noSubject;

struct Task {
  std::string name;
  std::uint32_t priority = 0;
  std::int32_t timeSlice = 0;
};

// A testpoint or a timing issue, as marks are about it.
struct MarkSubject {
  ETLCatType kind = TLCatTestpoint;
  std::string name;
  std::uint32_t id = 0;
};

class Subjects {
 public:
  explicit Subjects(const std::vector<const tasklog::Log*>& logs);

  const std::vector<Task>& Tasks() const { return tasks_; }
  const std::vector<MarkSubject>& MarkSubjects() const { return markSubjects_; }
  bool IsTask(SubjectIndex subject) const { return subject < tasks_.size(); }
  const MarkSubject& MarkSubjectOf(SubjectIndex subject) const {
    return markSubjects_[subject - tasks_.size()];
  }
  const std::string& NameOf(SubjectIndex subject) const;

  // All of this name; several tasks, or several testpoints, may share one.
  std::vector<TaskIndex> TasksNamed(std::string_view name) const;
  std::vector<SubjectIndex> MarkSubjectsNamed(ETLCatType kind, std::string_view name) const;

  // One probe, as a rule; `noSubject` for null.
  SubjectIndex Find(TLCategory category) const {
    std::size_t place = Place(category);
    while (table_[place].category != category) {
      if (!table_[place].category) return noSubject;
      place = (place + 1) & mask_;
    }
    return table_[place].subject;
  }

 private:
  struct Row {
    TLCategory category = nullptr;
    SubjectIndex subject = noSubject;
  };

  std::size_t Place(TLCategory category) const {
    const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(category));
    return static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15u) >> 32) & mask_;
  }
  void Put(TLCategory category, SubjectIndex subject);

  std::vector<Task> tasks_;
  std::vector<MarkSubject> markSubjects_;
  std::vector<Row> table_;  // a power of two, at most half full
  std::size_t mask_ = 0;
};

}  // namespace analysis
