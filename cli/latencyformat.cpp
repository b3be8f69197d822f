#include "latencyformat.h"

#include <algorithm>
#include <utility>

#include "print.h"
#include "summaryformat.h"
#include "text.h"
#include "texttable.h"

namespace cli {
namespace {

using analysis::Bin;
using analysis::Histogram;
using analysis::Latency;
using analysis::Summary;

constexpr std::size_t mostBins = 20;

class LatencyText : public LatencyFormat {
 public:
  explicit LatencyText(fmt::memory_buffer& out) : out_(out) {}

  void Add(const LaneLatencies& lane) override {
    Print(out_, "{}", std::exchange(separator_, "\n"));
    AddLaneText(out_, lane.source);
    const analysis::Values lengths = lane.latencies.Lengths();
    const Summary summary = lengths.Summarize();
    Print(out_, "  latencies     {}\n  unmatched     {}\n", summary.count, lane.latencies.UnmatchedBegins());
    if (summary.count == 0) return;
    PrintSummary(lane.source, summary);
    PrintHistogram(lane.source, MakeHistogram(lengths, mostBins));
    PrintWorst(lane.source, lane.worst);
  }

 private:
  void PrintSummary(const AnalysedLane& source, const Summary& summary) {
    const std::pair<const char*, std::uint64_t> lines[] = {{"least", summary.min},
                                                           {"median", summary.p50},
                                                           {"mean", NearestTick(summary.mean)},
                                                           {"95 %", summary.p95},
                                                           {"99 %", summary.p99},
                                                           {"99.9 %", summary.p999},
                                                           {"most", summary.max},
                                                           {"std. dev.", NearestTick(summary.stddev)}};
    const std::size_t width = source.LengthText(summary.max).size();
    for (const auto& [name, ticks] : lines)
      Print(out_, "    {:<12}{:>{}} {}\n", name, source.LengthText(ticks), width, source.Unit());
  }

  void PrintHistogram(const AnalysedLane& source, const Histogram& histogram) {
    constexpr std::size_t widestBar = 40;
    std::uint64_t most = 1;
    for (const Bin& bin : histogram.bins) most = std::max(most, bin.count);
    const std::size_t width = std::max<std::size_t>(source.LengthText(histogram.bins.back().to).size(), 8);
    Print(out_, "\n  {:>{}}  {:>{}}  {:>10}{}\n", fmt::format("from [{}]", source.Unit()), width, "to", width,
          "count", histogram.logarithmic ? "  (each row covers more than the one above)" : "");
    for (const Bin& bin : histogram.bins) {
      const double share = static_cast<double>(bin.count) / static_cast<double>(most);
      // Something shows where there is something.
      const auto bar = static_cast<std::size_t>(share * widestBar) + (bin.count > 0 && share * widestBar < 1);
      Print(out_, "  {:>{}}  {:>{}}  {:>10}{}{}\n", source.LengthText(bin.from), width,
            source.LengthText(bin.to), width, bin.count, bar > 0 ? "  " : "", std::string(bar, '#'));
    }
  }

  void PrintWorst(const AnalysedLane& source, const std::vector<Latency>& worst) {
    if (worst.empty()) return;
    std::size_t width = std::string_view("from [ticks]").size();
    for (const Latency& latency : worst) width = std::max(width, source.TimeText(latency.end).size());
    Print(out_, "\n  {:>{}}  {:>{}}  {:>{}}\n", fmt::format("from [{}]", source.Unit()), width, "to", width,
          "latency", width);
    for (const Latency& latency : worst) {
      Print(out_, "  {:>{}}  {:>{}}  {:>{}}\n", source.TimeText(latency.begin), width,
            source.TimeText(latency.end), width, source.LengthText(latency.Length()), width);
    }
  }

  fmt::memory_buffer& out_;
  const char* separator_ = "";
};

class LatencyJson : public LatencyFormat {
 public:
  LatencyJson(fmt::memory_buffer& out, const analysis::Selector& begin, const analysis::Selector& end)
      : json_(out) {
    json_.BeginObject();
    json_.Key("schema").Count(1);
    json_.Key("begin").Text(begin.Text());
    json_.Key("end").Text(end.Text());
    json_.Key("lanes").BeginArray();
  }

  void Add(const LaneLatencies& lane) override {
    const analysis::Values lengths = lane.latencies.Lengths();
    json_.BeginRow();
    AddLaneKeys(json_, lane.source);
    json_.Key("unmatched").Count(lane.latencies.UnmatchedBegins());
    json_.Key("latency");
    AddSummary(json_, lengths.Summarize());
    json_.Key("histogram");
    AddHistogram(json_, MakeHistogram(lengths, mostBins));
    json_.Key("worst").BeginArray();
    for (const Latency& latency : lane.worst) AddLatency(latency);
    json_.EndArray();
    json_.EndObject();
  }

  void End() override { json_.EndRows(); }

 private:
  void AddLatency(const Latency& latency) {
    json_.BeginObject();
    json_.Key("beginTicks").Ticks(latency.begin);
    json_.Key("endTicks").Ticks(latency.end);
    json_.Key("latencyTicks").Ticks(latency.Length());
    json_.EndObject();
  }

  JsonWriter json_;
};

}  // namespace

std::unique_ptr<LatencyFormat> MakeLatencyText(fmt::memory_buffer& out) {
  return std::make_unique<LatencyText>(out);
}

std::unique_ptr<LatencyFormat> MakeLatencyJson(fmt::memory_buffer& out, const analysis::Selector& begin,
                                               const analysis::Selector& end) {
  return std::make_unique<LatencyJson>(out, begin, end);
}

}  // namespace cli
