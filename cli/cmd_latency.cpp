// tasklog latency: how long it takes from one thing to another.
#include <algorithm>

#include "analysedlane.h"
#include "analysis/latency.h"
#include "analysis/walker.h"
#include "commandline.h"
#include "failure.h"
#include "latencyformat.h"
#include "latencyside.h"
#include "stdoutwriter.h"
#include "text.h"

namespace cli {
namespace {

struct Options {
  AnalysisOptions common;
  std::string begin;
  std::string end;
  std::string worst = "10";
  std::string format = "text";
};

std::size_t CheckedWorst(const std::string& text) {
  if (const auto count = ParseNumber(text))
    return static_cast<std::size_t>(std::min<std::uint64_t>(*count, SIZE_MAX));
  throw UsageError("--worst: " + Quoted(text) + " is not a number");
}

int ShowLatencies(const Options& options) {
  LaneLoader loader("latencies", options.common);
  LatencySide begin("--begin", options.begin);
  LatencySide end("--end", options.end);
  const std::size_t worst = CheckedWorst(options.worst);
  StdoutWriter out;
  const auto format = options.format == "json" ? MakeLatencyJson(out.Block(), begin.Which(), end.Which())
                                               : MakeLatencyText(out.Block());
  bool any = false;
  const auto show = [&](const AnalysedLane& lane) {
    const bool hasBegin = begin.IsIn(lane.lane);
    if (!end.IsIn(lane.lane) || !hasBegin) return;
    any = true;
    analysis::Latencies latencies(lane.lane, begin.Which(), end.Which());
    analysis::Walk(lane.lane, lane.conventions, {&latencies});
    format->Add({lane, latencies, latencies.Worst(worst)});
    out.EndOfLine();
  };
  const int exitCode = ForEachLane(
      loader, FindLanes(options.common.logs), [&] { out.Finish(); }, show);
  if (exitCode == exitSuccess) {
    begin.Finish();
    end.Finish();
    loader.Finish();
    if (!any)
      throw Failure("no lane has both " + Quoted(begin.Which().Text()) + " and " +
                    Quoted(end.Which().Text()));
  }
  format->End();
  out.Finish();
  return exitCode;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  DeclareAnalysisOptions(list, options->common);
  list.AddRequired("--begin", &options->begin,
                   "What a latency begins with: testpoint:NAME, issue:NAME,\nevent:TASK, activation:TASK, "
                   "start:TASK or\ncompletion:TASK",
                   "SELECTOR");
  list.AddRequired("--end", &options->end, "What it ends with, likewise", "SELECTOR");
  list.Add("--worst", &options->worst, "How many of the longest to list (default: 10)", "N");
  list.Add("--format", &options->format, "text (default) or json", "FORMAT");
  const std::vector<std::string> kinds = {
      "testpoint:", "issue:", "event:", "activation:", "start:", "completion:"};
  return {[options] { return ShowLatencies(*options); },
          {{"--format", {"text", "json"}}},
          {{"--begin", kinds}, {"--end", kinds}}};
}

}  // namespace

const Command latencyCommand{
    "latency", "Show how long it takes from one thing to another",
    "Examples:\n"
    "  tasklog latency demo.tasklog --begin activation:Diagnosis --end completion:Diagnosis\n"
    "  tasklog latency demo-logs --begin testpoint:SegmentBegin --end testpoint:LimitsChecked --worst 3",
    Declare};

}  // namespace cli
