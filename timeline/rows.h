// Which rows there are, in which order, and where they lie.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tracks.h"

namespace timeline {

enum class RowOrder : std::uint8_t { priority, load, name, firstRun };
std::optional<RowOrder> RowOrderNamed(std::string_view name);  // "priority", "load", "name", "first"

struct RowChoice {
  RowOrder order = RowOrder::priority;
  std::vector<std::string> patterns = {};  // shell patterns over names; none: all tasks
  bool hidesEmpty = true;                  // tasks without a run, job or mark from `from` to `to`
};

// The tasks to show, by priority and load the highest first, by first run the earliest; where that is equal
// the order of the log stays. Load is that from `from` to `to`.
std::vector<TaskIndex> RowsOf(const Tracks& tracks, const RowChoice& choice, Ticks from, Ticks to);

// A row: of a task, or with `noTask` of the whole lane.
struct PlacedRow {
  std::size_t lane;
  TaskIndex task;
  int top;  // pixels
  bool IsLane() const { return task == analysis::noTask; }
  int Height() const;
};

// The bands of a row, from its top.
inline constexpr int marksHeight = 10;
inline constexpr int runsTop = marksHeight;
inline constexpr int taskRunsHeight = 16;
inline constexpr int laneRunsHeight = 24;
inline constexpr int bracketHeight = 5;
inline constexpr int rowGap = 2;

inline int RunsHeightOf(const PlacedRow& row) { return row.IsLane() ? laneRunsHeight : taskRunsHeight; }
inline int PlacedRow::Height() const {
  return runsTop + RunsHeightOf(*this) + (IsLane() ? 0 : bracketHeight) + rowGap;
}

// The row of lane number `lane` and below it those of its tasks.
std::vector<PlacedRow> Place(std::size_t lane, const std::vector<TaskIndex>& tasks, int top);

}  // namespace timeline
