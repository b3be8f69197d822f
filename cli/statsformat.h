// The formats of `tasklog stats`. docs/cli.md, tasklog stats, has the text and CSV, docs/json.md the JSON.
#pragma once

#include <fmt/format.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "analysedlane.h"
#include "analysis/statistics.h"

namespace cli {

struct LaneStatistics {
  const AnalysedLane& source;
  const analysis::Statistics& statistics;
  std::vector<analysis::TaskIndex> tasks;  // those to show, in that order

  // Switches by the seconds that are covered; empty when that cannot be told.
  std::optional<double> SwitchesPerSecond() const;
};

// Orders tasks by "priority", "load", "response" or "name"; where that is equal, the order of the log stays.
void OrderTasks(std::vector<analysis::TaskIndex>& tasks, std::string_view key, const analysis::Lane& lane,
                const analysis::Statistics& statistics);

// Lane after lane, then the end.
class StatsFormat {
 public:
  virtual ~StatsFormat() = default;
  virtual void Add(const LaneStatistics& lane) = 0;
  virtual void End() {}
};

// Everything goes into `out`, which must outlive the format.
std::unique_ptr<StatsFormat> MakeStatsText(fmt::memory_buffer& out, bool colors);
std::unique_ptr<StatsFormat> MakeStatsCsv(fmt::memory_buffer& out);
std::unique_ptr<StatsFormat> MakeStatsJson(fmt::memory_buffer& out);

}  // namespace cli
