#include "rows.h"

#include <algorithm>

#include "analysis/pattern.h"
#include "marks.h"

namespace timeline {
namespace {

bool HasMarks(const Marks& marks, Ticks from, Ticks to) {
  const std::size_t first = FirstMarkAt(marks, from);
  return first < marks.size() && marks[first].time <= to;
}

bool HasSpans(const Spans& spans, Ticks from, Ticks to) {
  const std::size_t first = spans.FirstEndingAfter(from);
  return first < spans.Size() && spans.BeginOf(first) <= to;
}

bool IsEmpty(const TaskTrack& track, Ticks from, Ticks to) {
  return !HasSpans(track.runs, from, to) && !HasSpans(track.jobs, from, to) &&
         !HasMarks(track.events, from, to) && !HasMarks(track.testpoints, from, to) &&
         !HasMarks(track.issues, from, to);
}

bool IsChosen(const std::string& name, const std::vector<std::string>& patterns) {
  return patterns.empty() || std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
           return analysis::MatchesPattern(pattern, name);
         });
}

// Orders by a key, the smallest first.
template <class KeyOf>
void SortBy(std::vector<TaskIndex>& tasks, KeyOf keyOf) {
  std::vector<std::pair<decltype(keyOf(0)), TaskIndex>> keyed;
  for (const TaskIndex task : tasks) keyed.emplace_back(keyOf(task), task);
  std::sort(keyed.begin(), keyed.end());
  for (std::size_t i = 0; i < tasks.size(); ++i) tasks[i] = keyed[i].second;
}

}  // namespace

std::optional<RowOrder> RowOrderNamed(std::string_view name) {
  if (name == "priority") return RowOrder::priority;
  if (name == "load") return RowOrder::load;
  if (name == "name") return RowOrder::name;
  if (name == "first") return RowOrder::firstRun;
  return std::nullopt;
}

std::vector<TaskIndex> RowsOf(const Tracks& tracks, const RowChoice& choice, Ticks from, Ticks to) {
  const std::vector<analysis::Task>& all = tracks.Lane().Tasks();
  std::vector<TaskIndex> tasks;
  for (TaskIndex task = 0; task < all.size(); ++task) {
    if (choice.hidesEmpty && IsEmpty(tracks.Tasks()[task], from, to)) continue;
    if (IsChosen(all[task].name, choice.patterns)) tasks.push_back(task);
  }
  switch (choice.order) {
    case RowOrder::priority:
      SortBy(tasks, [&](TaskIndex task) { return UINT32_MAX - all[task].priority; });
      break;
    case RowOrder::load:
      SortBy(tasks,
             [&](TaskIndex task) { return UINT64_MAX - tracks.Tasks()[task].runs.TicksWithin(from, to); });
      break;
    case RowOrder::name:
      SortBy(tasks, [&](TaskIndex task) { return std::string_view(all[task].name); });
      break;
    case RowOrder::firstRun:
      SortBy(tasks, [&](TaskIndex task) {
        const Spans& runs = tracks.Tasks()[task].runs;
        return runs.Size() == 0 ? UINT64_MAX : runs.BeginOf(0);
      });
      break;
  }
  return tasks;
}

std::vector<PlacedRow> Place(std::size_t lane, const std::vector<TaskIndex>& tasks, int top) {
  std::vector<PlacedRow> rows{{lane, analysis::noTask, top}};
  for (const TaskIndex task : tasks) rows.push_back({lane, task, rows.back().top + rows.back().Height()});
  return rows;
}

}  // namespace timeline
