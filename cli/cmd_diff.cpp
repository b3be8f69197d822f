// tasklog diff: what moved between two recordings, and what is only noise.
#include <unistd.h>

#include <algorithm>

#include "commandline.h"
#include "difference.h"
#include "gate.h"
#include "stdoutwriter.h"
#include "terminal.h"
#include "text.h"

namespace cli {
namespace {

struct Options {
  AnalysisOptions common;  // its logs: A and B, with --base those of B
  std::vector<std::string> base;
  std::optional<std::string> failOver;
  std::string format = "text";
};

// The logs of one side.
struct Side {
  std::vector<AnalysedLane> lanes;
  std::vector<std::size_t> lanesOfArgument;
};

Side LoadSide(LaneLoader& loader, const std::vector<std::string>& arguments) {
  Side side;
  for (const std::string& argument : arguments) {
    const std::vector<Lane> lanes = FindLanes({argument});
    side.lanesOfArgument.push_back(lanes.size());
    for (const Lane& lane : lanes) side.lanes.push_back(loader.Load(lane));
  }
  return side;
}

// Logs of one lane each belong together, whatever their names.
bool HasOneLaneEach(const Side& side) {
  return std::all_of(side.lanesOfArgument.begin(), side.lanesOfArgument.end(),
                     [](std::size_t count) { return count == 1; });
}

Difference CompareLogs(const Options& options, const std::vector<std::string>& before,
                       const std::vector<std::string>& after) {
  LaneLoader loader("diff", options.common);
  Side a = LoadSide(loader, before);
  Side b = LoadSide(loader, after);
  loader.Finish();
  const bool named = !HasOneLaneEach(a) || !HasOneLaneEach(b);
  return CompareSides(std::move(a.lanes), std::move(b.lanes), named);
}

int Judge(const std::optional<double>& failOver, const Difference& difference) {
  if (!failOver) return exitKept;
  const std::vector<std::string> worse = WorseBy(*failOver, difference);
  if (worse.empty()) return exitKept;
  const std::string more = worse.size() > 1 ? fmt::format(" ({} more)", worse.size() - 1) : "";
  PrintError(fmt::format("diff: worse by more than {:g} %: {}{}", *failOver * 100, worse.front(), more));
  return exitBroken;
}

int Diff(const Options& options) {
  std::optional<double> failOver;
  if (options.failOver && !(failOver = ParsePercent(*options.failOver)))
    throw UsageError("--fail-over: " + Quoted(*options.failOver) + " is not a percentage such as 10%");
  std::vector<std::string> before = options.base;
  std::vector<std::string> after = options.common.logs;
  if (before.empty()) {
    if (after.size() != 2)
      throw UsageError("diff: give two logs, or --base LOG and the logs to compare with it");
    before.push_back(after.front());
    after.erase(after.begin());
  }
  const Difference difference = CompareLogs(options, before, after);
  StdoutWriter out;
  if (options.format == "csv") {
    AppendDiffCsv(out.Block(), difference);
  } else if (options.format == "json") {
    AppendDiffJson(out.Block(), difference);
  } else {
    AppendDiffText(out.Block(), difference, WantsColors(STDOUT_FILENO));
  }
  out.Finish();
  return Judge(failOver, difference);
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  DeclareAnalysisOptions(list, options->common);
  list.Add("--base", &options->base, "A log from before; may be repeated. Then all LOGs are from\nafter",
           "LOG");
  list.Add("--fail-over", &options->failOver,
           "Exit with 1 when a time of a task, noise aside, got\nworse by more than this", "PERCENT");
  list.Add("--format", &options->format, "text (default), csv or json", "FORMAT");
  return {[options] { return RunGate([&] { return Diff(*options); }); },
          {{"--format", {"text", "csv", "json"}}}};
}

}  // namespace

const Command diffCommand{
    "diff", "Compare two recordings, or two sets of them",
    "Exit code: 0, with --fail-over 1 when something got worse, 2 when it could not be told.\n\n"
    "Examples:\n"
    "  tasklog diff before.tasklog after.tasklog\n"
    "  tasklog diff --base monday-logs --base tuesday-logs today-logs --fail-over 10%",
    Declare};

}  // namespace cli
