#include "summaryformat.h"

#include <cmath>

#include "print.h"
#include "text.h"
#include "texttable.h"

namespace cli {
namespace {

using analysis::Summary;

struct TicksField {
  const char* key;
  const char* column;
  std::uint64_t Summary::*ticks;
};
constexpr TicksField extremes[] = {{"min", "min", &Summary::min}, {"max", "max", &Summary::max}};
constexpr TicksField percentiles[] = {{"p50", "p50", &Summary::p50},
                                      {"p95", "p95", &Summary::p95},
                                      {"p99", "p99", &Summary::p99},
                                      {"p99.9", "p99_9", &Summary::p999},
                                      {"maxAtTicks", "max_at_ticks", &Summary::maxAt}};

void AddTicks(JsonWriter& json, const Summary& summary, const TicksField& field) {
  json.Key(field.key);
  summary.count == 0 ? json.Null() : json.Ticks(summary.*field.ticks);
}

void AddTicks(CsvWriter& csv, const Summary& summary, const TicksField& field) {
  summary.count == 0 ? csv.Nothing() : csv.Count(summary.*field.ticks);
}

std::optional<double> IfAny(const Summary& summary, double value) {
  return summary.count == 0 ? std::nullopt : std::optional(value);
}

}  // namespace

void AddSummary(JsonWriter& json, const Summary& summary) {
  json.BeginObject();
  json.Key("count").Count(summary.count);
  for (const TicksField& field : extremes) AddTicks(json, summary, field);
  json.Key("mean").Number(IfAny(summary, summary.mean));
  json.Key("stddev").Number(IfAny(summary, summary.stddev));
  for (const TicksField& field : percentiles) AddTicks(json, summary, field);
  json.EndObject();
}

void AddHistogram(JsonWriter& json, const analysis::Histogram& histogram) {
  json.BeginObject();
  json.Key("logarithmic").Bool(histogram.logarithmic);
  json.Key("bins").BeginArray();
  for (const analysis::Bin& bin : histogram.bins) {
    json.BeginObject();
    json.Key("fromTicks").Ticks(bin.from);
    json.Key("toTicks").Ticks(bin.to);
    json.Key("count").Count(bin.count);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
}

void AddSummaryColumns(CsvWriter& csv, std::string_view name) {
  const std::string prefix = SnakeCase(name) + "_";
  csv.Text(prefix + "count");
  for (const TicksField& field : extremes) csv.Text(prefix + field.column);
  csv.Text(prefix + "mean");
  csv.Text(prefix + "stddev");
  for (const TicksField& field : percentiles) csv.Text(prefix + field.column);
}

void AddSummary(CsvWriter& csv, const Summary& summary) {
  csv.Count(summary.count);
  for (const TicksField& field : extremes) AddTicks(csv, summary, field);
  csv.Number(IfAny(summary, summary.mean));
  csv.Number(IfAny(summary, summary.stddev));
  for (const TicksField& field : percentiles) AddTicks(csv, summary, field);
}

std::uint64_t NearestTick(double ticks) { return static_cast<std::uint64_t>(std::llround(ticks)); }

void AddLaneText(fmt::memory_buffer& out, const AnalysedLane& lane) {
  Print(out, "{}\n", SafeText(lane.source.shownAs));
  if (!lane.lane.Gaps().empty()) {
    Print(out, "  coverage      {}\n", CoverageText(lane));
  }
}

std::string CoverageText(const AnalysedLane& lane) {
  const std::string whole = fmt::format("{} of {} {}", Percent(lane.lane.Coverage()),
                                        lane.LengthText(lane.lane.Length()), lane.Unit());
  const std::size_t gaps = lane.lane.Gaps().size();
  if (gaps == 0) return whole;
  return fmt::format("{}, {} {} of {} {} in all", whole, gaps, gaps == 1 ? "gap" : "gaps",
                     lane.LengthText(lane.lane.TicksInGaps()), lane.Unit());
}

void AddLaneKeys(JsonWriter& json, const AnalysedLane& lane) {
  const analysis::Lane& of = lane.lane;
  json.Key("lane").Text(lane.source.name);
  json.Key("file").Text(lane.source.shownAs);
  json.Key("startTicks").Ticks(of.StartTime());
  json.Key("stopTicks").Ticks(of.StopTime());
  json.Key("durationTicks").Ticks(of.Length());
  json.Key("ticksPerSecond");
  of.TicksPerSecond() == 0 ? json.Null() : json.Count(of.TicksPerSecond());
  json.Key("coverage").Number(of.Coverage());
  json.Key("gaps").BeginArray();
  for (const analysis::Gap& gap : of.Gaps()) {
    json.BeginObject();
    json.Key("fromTicks").Ticks(gap.from);
    json.Key("toTicks").Ticks(gap.to);
    json.EndObject();
  }
  json.EndArray();
  json.Key("switchMeanings").TextOrNull(lane.conventions.meanings.Text());
  json.Key("idleTask").TextOrNull(lane.IdleName());
}

}  // namespace cli
