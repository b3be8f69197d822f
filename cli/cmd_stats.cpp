// tasklog stats: what each task took, needed and waited for.
#include <unistd.h>

#include <algorithm>

#include "analysedlane.h"
#include "commandline.h"
#include "failure.h"
#include "statsformat.h"
#include "stdoutwriter.h"
#include "taskfilter.h"
#include "terminal.h"

namespace cli {
namespace {

using analysis::Quantity;
using analysis::Statistics;
using analysis::TaskIndex;

struct Options {
  AnalysisOptions common;
  std::vector<std::string> tasks;  // shell patterns
  std::string sort = "priority";
  std::string format = "text";
};

// Orders tasks by one key; where that is equal, the order of the log stays.
void Sort(std::vector<TaskIndex>& tasks, const std::string& key, const analysis::Lane& lane,
          const Statistics& statistics) {
  if (key == "name") {
    const auto name = [&](TaskIndex task) { return std::string_view(lane.Tasks()[task].name); };
    std::stable_sort(tasks.begin(), tasks.end(), [&](TaskIndex a, TaskIndex b) { return name(a) < name(b); });
    return;
  }
  const auto number = [&](TaskIndex task) -> std::uint64_t {
    const analysis::TaskStatistics& of = statistics.Tasks()[task];
    if (key == "load") return of.loadTicks;
    if (key == "response") return of.Of(Quantity::response).Max();
    return lane.Tasks()[task].priority;
  };
  std::stable_sort(tasks.begin(), tasks.end(),
                   [&](TaskIndex a, TaskIndex b) { return number(a) > number(b); });
}

std::unique_ptr<StatsFormat> MakeFormat(const std::string& format, fmt::memory_buffer& out) {
  if (format == "csv") return MakeStatsCsv(out);
  if (format == "json") return MakeStatsJson(out);
  return MakeStatsText(out, WantsColors(STDOUT_FILENO));
}

int Stats(const Options& options) {
  RequireOneOf("--sort", options.sort, {"priority", "load", "response", "name"});
  RequireOneOf("--format", options.format, {"text", "csv", "json"});
  LaneLoader loader("statistics", options.common);
  TaskFilter filter(options.tasks);
  StdoutWriter out;
  const auto format = MakeFormat(options.format, out.Block());
  const auto show = [&](const AnalysedLane& lane) {
    const Statistics statistics = Statistics::Of(lane.lane, lane.conventions);
    std::vector<TaskIndex> tasks = filter.Of(lane.lane);
    Sort(tasks, options.sort, lane.lane, statistics);
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

std::function<int()> Declare(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  DeclareAnalysisOptions(app, options->common);
  DeclareTaskPatterns(app, options->tasks);
  app.add_option("--sort", options->sort, "priority (default), load, response or name")->type_name("KEY");
  app.add_option("--format", options->format, "text (default), csv or json")->type_name("FORMAT");
  return [options] { return Stats(*options); };
}

}  // namespace

const Command statsCommand{"stats", "Show load, execution, response and jitter of each task",
                           "Examples:\n"
                           "  tasklog stats demo.tasklog\n"
                           "  tasklog stats demo-logs --task '*Loop' --from 1.5s --sort response\n"
                           "  tasklog stats demo.tasklog --format json > demo.json",
                           Declare};

}  // namespace cli
