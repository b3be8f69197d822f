// tasklog stats: what each task took, needed and waited for.
#include <unistd.h>

#include "analysedlane.h"
#include "commandline.h"
#include "failure.h"
#include "statsformat.h"
#include "stdoutwriter.h"
#include "taskfilter.h"
#include "terminal.h"

namespace cli {
namespace {

using analysis::Statistics;
using analysis::TaskIndex;

struct Options {
  AnalysisOptions common;
  std::vector<std::string> tasks;  // shell patterns
  std::string sort = "priority";
  std::string format = "text";
};

std::unique_ptr<StatsFormat> MakeFormat(const std::string& format, fmt::memory_buffer& out) {
  if (format == "csv") return MakeStatsCsv(out);
  if (format == "json") return MakeStatsJson(out);
  return MakeStatsText(out, WantsColors(STDOUT_FILENO));
}

int Stats(const Options& options) {
  LaneLoader loader("statistics", options.common);
  TaskFilter filter(options.tasks);
  StdoutWriter out;
  const auto format = MakeFormat(options.format, out.Block());
  const auto show = [&](const AnalysedLane& lane) {
    const Statistics statistics = Statistics::Of(lane.lane, lane.conventions);
    std::vector<TaskIndex> tasks = filter.Of(lane.lane);
    OrderTasks(tasks, options.sort, lane.lane, statistics);
    format->Add({lane, statistics, std::move(tasks)});
    out.EndOfLine();
  };
  const int exitCode = ForEachLane(
      loader, FindLanes(options.common.logs), [&] { out.Finish(); }, show);
  if (exitCode == exitSuccess) {
    loader.Finish();
    filter.Finish();
  }
  format->End();
  out.Finish();
  return exitCode;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  DeclareAnalysisOptions(list, options->common);
  DeclareTaskPatterns(list, options->tasks);
  list.Add("--sort", &options->sort, "priority (default), load, response or name", "KEY");
  list.Add("--format", &options->format, "text (default), csv or json", "FORMAT");
  return {[options] { return Stats(*options); },
          {{"--sort", {"priority", "load", "response", "name"}}, {"--format", {"text", "csv", "json"}}}};
}

}  // namespace

const Command statsCommand{"stats", "Show load, execution, response and jitter of each task",
                           "Examples:\n"
                           "  tasklog stats demo.tasklog\n"
                           "  tasklog stats demo-logs --task '*Loop' --from 1.5s --sort response\n"
                           "  tasklog stats demo.tasklog --format json > demo.json",
                           Declare};

}  // namespace cli
