// The formats of `tasklog latency`. docs/cli.md, tasklog latency, has the text, docs/json.md the JSON.
#pragma once

#include <fmt/format.h>

#include <memory>
#include <vector>

#include "analysedlane.h"
#include "analysis/latency.h"

namespace cli {

struct LaneLatencies {
  const AnalysedLane& source;
  const analysis::Latencies& latencies;
  std::vector<analysis::Latency> worst;
};

// Lane after lane, then the end.
class LatencyFormat {
 public:
  virtual ~LatencyFormat() = default;
  virtual void Add(const LaneLatencies& lane) = 0;
  virtual void End() {}
};

// Everything goes into `out`, which must outlive the format.
std::unique_ptr<LatencyFormat> MakeLatencyText(fmt::memory_buffer& out);
std::unique_ptr<LatencyFormat> MakeLatencyJson(fmt::memory_buffer& out, const analysis::Selector& begin,
                                               const analysis::Selector& end);

}  // namespace cli
