// What the parts of some jobs of one task normally are.
#pragma once

#include <vector>

#include "parts.h"

namespace analysis {

// Time: the parts that are added. Memory: 24 bytes each, and 4 bytes a task.
class PartMedians {
 public:
  explicit PartMedians(std::size_t tasks) : rowsAt_(tasks + 2) {}

  // Those of one more job.
  void Add(const std::vector<Part>& parts);
  // The medians of what was added since the last call, by kind and task. A part that no more than half of the
  // jobs have is normally 0, and left out.
  std::vector<Part> Take();

 private:
  struct Row {
    Part part;
    std::size_t count;
    std::size_t end;  // behind the last of its values
  };

  // Dispatch is in front; a wait is of the task of the execution, and stands behind all tasks.
  std::size_t PlaceOf(const Part& part) const {
    return part.kind == PartKind::waiting ? rowsAt_.size() - 1 : part.task + TaskIndex{1};
  }
  bool IsCommon(const Row& row) const { return row.count > jobs_ / 2; }
  std::vector<Ticks> ValuesOfCommon();

  std::size_t jobs_ = 0;
  std::vector<Part> all_;
  std::vector<Row> rows_;
  std::vector<std::uint32_t> rowsAt_;  // by PlaceOf(): 1 + its place in `rows_`
};

}  // namespace analysis
