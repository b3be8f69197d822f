// Statistics of a series, and what a lane is, as all commands print them for programs.
#pragma once

#include <string_view>

#include "analysedlane.h"
#include "analysis/histogram.h"
#include "analysis/values.h"
#include "csvwriter.h"
#include "jsonwriter.h"

namespace cli {

// {"count":...,"min":...}; of a series without values all but the count are null.
void AddSummary(JsonWriter& json, const analysis::Summary& summary);

// {"logarithmic":...,"bins":[...]}
void AddHistogram(JsonWriter& json, const analysis::Histogram& histogram);

// "startLatency" heads the columns start_latency_count, start_latency_min, ...
void AddSummaryColumns(CsvWriter& csv, std::string_view name);
void AddSummary(CsvWriter& csv, const analysis::Summary& summary);

// A mean or a deviation, for people.
std::uint64_t NearestTick(double ticks);

// The name of a lane on a line, and its coverage and gaps on another when it lacks something.
void AddLaneText(fmt::memory_buffer& out, const AnalysedLane& lane);

// "98.21 % of 1.003900 s, 2 gaps of 0.018000 s in all"
std::string CoverageText(const AnalysedLane& lane);

// The keys of a lane that say what was analysed and how.
void AddLaneKeys(JsonWriter& json, const AnalysedLane& lane);

}  // namespace cli
