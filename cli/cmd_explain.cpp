// tasklog explain: what was late, and why.
#include <algorithm>

#include "commandline.h"
#include "explainformat.h"
#include "explainquestion.h"
#include "failure.h"
#include "gate.h"
#include "stdoutwriter.h"
#include "text.h"

namespace cli {
namespace {

struct Options {
  AnalysisOptions common;
  ExplainOptions asked;
  std::optional<std::string> against;
  std::string limit = "5";
  std::string format = "text";
};

// The good log: of each lane the one of the same name, or the only one.
class Good {
 public:
  Good(LaneLoader& loader, const std::optional<std::string>& path) {
    if (!path) return;
    for (const Lane& lane : FindLanes({*path}))
      lanes_.push_back(std::make_unique<AnalysedLane>(loader.Load(lane)));
    for (const auto& lane : lanes_)
      schedules_.push_back(std::make_unique<analysis::Schedule>(lane->lane, lane->conventions));
  }

  const analysis::Schedule* For(const AnalysedLane& lane) const {
    for (std::size_t i = 0; i < lanes_.size(); ++i)
      if (lanes_.size() == 1 || lanes_[i]->source.name == lane.source.name) return Checked(i, lane);
    return nullptr;
  }

 private:
  const analysis::Schedule* Checked(std::size_t place, const AnalysedLane& lane) const {
    if (lanes_[place]->lane.TicksPerSecond() != lane.lane.TicksPerSecond())
      throw Failure("--against: " + Quoted(lane.source.shownAs) + " has another tick rate than the good log");
    return schedules_[place].get();
  }

  std::vector<std::unique_ptr<AnalysedLane>> lanes_;
  std::vector<std::unique_ptr<analysis::Schedule>> schedules_;
};

std::size_t CheckedLimit(const std::string& text) {
  if (const auto count = ParseNumber(text))
    return static_cast<std::size_t>(std::min<std::uint64_t>(*count, SIZE_MAX));
  throw UsageError("--limit: " + Quoted(text) + " is not a number");
}

int ExplainLogs(const Options& options) {
  LaneLoader loader("explain", options.common);
  ExplainQuestion asked(options.asked);
  const std::size_t limit = CheckedLimit(options.limit);
  const Good good(loader, options.against);
  StdoutWriter out;
  const auto format =
      options.format == "json" ? MakeExplainJson(out.Block(), limit) : MakeExplainText(out.Block(), limit);
  bool found = false;
  const auto explain = [&](const AnalysedLane& lane) {
    const auto question = asked.For(lane);
    if (!question) return;
    const analysis::Schedule schedule(lane.lane, lane.conventions);
    const analysis::Explanation explanation = analysis::Explain(schedule, *question, good.For(lane));
    found |= !explanation.findings.empty();
    format->Add({lane, explanation, *question});
    out.EndOfLine();
  };
  const int exitCode = ForEachLane(
      loader, FindLanes(options.common.logs), [&] { out.Finish(); }, explain);
  if (exitCode == exitSuccess) {
    asked.Finish();
    loader.Finish();
  }
  format->End();
  out.Finish();
  if (exitCode != exitSuccess) return exitUntold;
  return found ? exitBroken : exitKept;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  DeclareAnalysisOptions(list, options->common);
  list.Add("--task", &options->asked.task, "Only what made this task late", "NAME");
  list.Add("--at", &options->asked.at, "Explain the jobs under way at this time", "TIME");
  list.Add("--issue", &options->asked.issue, "Explain the jobs under way at this timing issue", "NAME");
  list.Add("--over", &options->asked.over, "Explain all jobs that took longer: 2ms", "LENGTH");
  list.Add("--against", &options->against, "A good log, which says what is normal", "LOG");
  list.Add("--limit", &options->limit, "How many findings to tell of each lane (default: 5)", "N");
  list.Add("--format", &options->format, "text (default) or json", "FORMAT");
  return {[options] { return RunGate([&] { return ExplainLogs(*options); }); },
          {{"--format", {"text", "json"}}}};
}

}  // namespace

const Command explainCommand{"explain", "Say what was late, and why",
                             "Exit code: 0 nothing found, 1 findings, 2 it could not be told.\n\n"
                             "Examples:\n"
                             "  tasklog explain machine.tasklog\n"
                             "  tasklog explain machine.tasklog --task PathPlanner --against good.tasklog\n"
                             "  tasklog explain machine.tasklog --at 1.4384s --format json",
                             Declare};

}  // namespace cli
