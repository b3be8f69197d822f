// The formats of `tasklog explain`. docs/cli.md, tasklog explain, has the text, docs/json.md the JSON.
#pragma once

#include <fmt/format.h>

#include <memory>

#include "analysedlane.h"
#include "analysis/findings.h"

namespace cli {

struct LaneExplanation {
  const AnalysedLane& source;
  const analysis::Explanation& explanation;
  const analysis::Question& question;
};

// Lane after lane, then the end.
class ExplainFormat {
 public:
  virtual ~ExplainFormat() = default;
  virtual void Add(const LaneExplanation& lane) = 0;
  virtual void End() {}
};

// Everything goes into `out`, which must outlive the format. Of each lane `limit` findings are told.
std::unique_ptr<ExplainFormat> MakeExplainText(fmt::memory_buffer& out, std::size_t limit);
std::unique_ptr<ExplainFormat> MakeExplainJson(fmt::memory_buffer& out, std::size_t limit);

}  // namespace cli
