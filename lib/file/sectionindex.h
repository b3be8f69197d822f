// Which entries each task's section of a file holds.
#pragma once

#include <memory>
#include <vector>

#include "model/model.h"

// A list of entries for every task, made in one pass over the log: the cost of a save does not depend on the
// number of tasks. `Number` is wide enough to number the entries; the narrow one takes half the memory.
template <class Number>
class SectionIndex {
 public:
  explicit SectionIndex(const _STLTaskLog& log);  // throws bad_alloc

  // Calls `visit` with each entry of a task's section, in the log's order.
  template <class Visit>
  void ForEach(const _STLCategory& task, Visit visit) const {
    const Number* end = ends_[task.index];
    for (const Number* number = begins_[task.index]; number != end; ++number) {
      // The entries of one task lie apart: without this the processor would wait for each.
      if (end - number > ahead) __builtin_prefetch(&log_.entries[number[ahead]]);
      visit(log_.entries[*number]);
    }
  }

 private:
  static constexpr std::ptrdiff_t ahead = 16;

  void Add(const _STLCategory* task, std::size_t number) {
    *ends_[task->index]++ = static_cast<Number>(number);
  }

  const _STLTaskLog& log_;
  std::unique_ptr<Number[]> numbers_;  // the lists one behind the other, in the
                                       // order of the categories
  std::vector<Number*> begins_;
  std::vector<Number*> ends_;
};

template <class Number>
SectionIndex<Number>::SectionIndex(const _STLTaskLog& log) : log_(log) {
  // Room for every entry that holds the task. Its section needs less where it has events of other tasks.
  constexpr u64 types = TL_LOGS_SWITCHES | TL_LOGS_TASK_EVENTS;
  std::vector<std::size_t> offsets;
  std::size_t size = 0;
  for (const _STLCategory* category : log.categories) {
    offsets.push_back(size);
    if (category->GetType() == TLCatTask) size += static_cast<std::size_t>(category->entryCounts.Sum(types));
  }
  numbers_.reset(new Number[size]);  // not zeroed
  for (const std::size_t offset : offsets) begins_.push_back(numbers_.get() + offset);
  ends_ = begins_;

  for (std::size_t i = 0; i < log.entries.size(); ++i) {
    const _STLEntry& entry = log.entries[i];
    if (!MaskHas(types, entry.type)) continue;
    const auto [subject, running] = entry.slots;
    if (subject) Add(subject, i);
    if (running && running != subject && entry.type != TLLogTaskEvent) Add(running, i);
  }
}
