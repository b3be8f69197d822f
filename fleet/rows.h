// The rows of one recording, as a Parquet file in memory: of each lane one, of each of its tasks one for each
// statistic, and one for each finding. docs/fleet.md, Columns, has the schema.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "analysis/findings.h"
#include "analysis/statistics.h"

namespace fleet {

// It grows when a column changes its meaning or goes; columns may be added without.
inline constexpr std::int32_t schemaVersion = 1;

struct Recording {
  std::string identity;
  std::string source;  // where it lay
  // Empty: unknown. The last three are what `record` noted.
  std::string machine = {};
  std::string target = {};
  std::string startedAt = {};
  std::string tool = {};
};

struct Columns;

class Rows {
 public:
  // The file goes to the end of `out`, which must outlive this.
  Rows(const Recording& recording, std::string& out);
  Rows(const Rows&) = delete;
  Rows& operator=(const Rows&) = delete;
  ~Rows();

  // A lane that cannot be read; without a name the recording as a whole.
  void AddBroken(std::string_view lane, std::string_view message);
  // A lane with all its tasks. The findings follow.
  void AddLane(std::string_view name, const analysis::Lane& lane, const analysis::Statistics& statistics,
               std::uint64_t entries);
  // Of the lane that was added last. The verdict is what `explain` says.
  void AddFinding(const analysis::Finding& finding, const std::string& verdict);
  void Finish();

 private:
  struct Row;
  void AddTask(analysis::TaskIndex index, const analysis::TaskStatistics& task, std::optional<double> load);
  Row NewRow(std::string_view kind) const;
  void Put(const Row& row);

  Recording recording_;
  std::unique_ptr<Columns> columns_;
  std::string laneName_;
  const analysis::Lane* lane_ = nullptr;  // borrowed until the next one
  std::int32_t findings_ = 0;
};

}  // namespace fleet
