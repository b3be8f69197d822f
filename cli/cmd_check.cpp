// tasklog check: whether logs keep their budgets, and budgets out of good logs.
#include <unistd.h>

#include <algorithm>

#include "analysis/pattern.h"
#include "checkformat.h"
#include "commandline.h"
#include "gate.h"
#include "stdoutwriter.h"
#include "suggest.h"
#include "terminal.h"
#include "text.h"

namespace cli {
namespace {

struct Options {
  AnalysisOptions common;
  std::optional<std::string> budget;
  std::string format = "text";
  bool suggest = false;
  std::optional<std::string> margin;
};

// The rules of a budget file, and which of them were about something so far.
class Rules {
 public:
  explicit Rules(const std::string& path) : rules_(ReadBudgetFile(path)), matched_(rules_.size()) {}

  std::vector<Check> Judge(const AnalysedLane& lane) {
    std::vector<std::size_t> places;  // in rules_, of those that are about the lane
    std::vector<analysis::Budget> budgets;
    for (std::size_t i = 0; i < rules_.size(); ++i) {
      const std::string& lanes = rules_[i].lanes;
      if (!lanes.empty() && !analysis::MatchesPattern(lanes, lane.source.name)) continue;
      places.push_back(i);
      budgets.push_back(rules_[i].For(lane));
    }
    const analysis::Verdicts verdicts = analysis::Evaluate(lane.lane, lane.conventions, budgets);
    std::vector<Check> checks;
    for (const analysis::Verdict& verdict : verdicts.all) {
      matched_[places[verdict.budget]] = true;
      checks.push_back({rules_[places[verdict.budget]], budgets[verdict.budget], verdict});
    }
    if (!verdicts.unmatched.empty()) Remember(lane.lane.Names());
    return checks;
  }

  // Prints a line for each rule that was about nothing; false when there is one.
  bool AllMatched() const {
    bool all = true;
    for (std::size_t i = 0; i < rules_.size(); ++i) {
      if (matched_[i]) continue;
      PrintError(fmt::format("{}: the logs have no {}{}", SafeText(rules_[i].place), rules_[i].Subject(),
                             Suggestion(rules_[i].budget.pattern, seen_)));
      all = false;
    }
    return all;
  }

 private:
  void Remember(const analysis::Subjects& names) {
    for (const analysis::Task& task : names.Tasks()) seen_.push_back(task.name);
    for (const analysis::MarkSubject& mark : names.MarkSubjects()) seen_.push_back(mark.name);
  }

  std::vector<BudgetRule> rules_;
  std::vector<bool> matched_;
  std::vector<std::string> seen_;
};

std::unique_ptr<CheckFormat> MakeFormat(const Options& options, fmt::memory_buffer& out) {
  if (options.format == "json") return MakeCheckJson(out, *options.budget);
  if (options.format == "junit") return MakeCheckJunit(out);
  return MakeCheckText(out, WantsColors(STDOUT_FILENO));
}

int CheckLogs(const Options& options) {
  LaneLoader loader("check", options.common);
  Rules rules(*options.budget);
  StdoutWriter out;
  const auto format = MakeFormat(options, out.Block());
  bool broken = false;
  const auto check = [&](const AnalysedLane& lane) {
    const std::vector<Check> checks = rules.Judge(lane);
    broken |= CountChecks(checks).broken > 0;
    format->Add({lane, checks});
  };
  const int exitCode = ForEachLane(
      loader, FindLanes(options.common.logs), [&] { out.Finish(); }, check);
  format->End();
  out.Finish();
  if (exitCode != exitSuccess) return exitUntold;
  loader.Finish();
  if (!rules.AllMatched()) return exitUntold;
  return broken ? exitBroken : exitKept;
}

double CheckedMargin(const std::optional<std::string>& text) {
  if (!text) return 0.2;
  if (const auto margin = ParsePercent(*text)) return *margin;
  throw UsageError("--margin: " + Quoted(*text) + " is not a percentage such as 20%");
}

// All lanes are needed at once: tasks of one name are taken together.
int SuggestBudget(const Options& options) {
  const double margin = CheckedMargin(options.margin);
  LaneLoader loader("check", options.common);
  std::vector<AnalysedLane> lanes;
  for (const Lane& lane : FindLanes(options.common.logs)) lanes.push_back(loader.Load(lane));
  loader.Finish();
  std::vector<analysis::Statistics> statistics;
  std::vector<analysis::Example> examples;
  statistics.reserve(lanes.size());
  for (const AnalysedLane& lane : lanes) {
    if (lane.lane.TicksPerSecond() != lanes.front().lane.TicksPerSecond())
      throw Failure("check: the logs have different tick rates (suggest budgets for each by itself)");
    statistics.push_back(analysis::Statistics::Of(lane.lane, lane.conventions));
    examples.push_back({&lane.lane, &statistics.back()});
  }
  StdoutWriter out;
  out.Print("# Budgets of `tasklog check`: {:g} % beyond what was seen in\n", margin * 100);
  for (const AnalysedLane& lane : lanes)
    out.Print("#   {}, {} {}\n", SafeText(lane.source.shownAs), lane.LengthText(lane.lane.Length()),
              lane.Unit());
  out.Print("{}", BudgetFileText(analysis::Suggest(examples, margin), lanes.front().lane.TicksPerSecond()));
  out.Finish();
  return exitSuccess;
}

int RunCheck(const Options& options) {
  if (options.suggest == options.budget.has_value())
    throw UsageError("check: give either --budget FILE or --suggest");
  if (options.margin && !options.suggest) throw UsageError("check: --margin goes with --suggest");
  return RunGate([&] { return options.suggest ? SuggestBudget(options) : CheckLogs(options); });
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  DeclareAnalysisOptions(list, options->common);
  list.Add("--budget", &options->budget, "The limits to keep, TOML (docs/cli.md, Budget files)", "FILE");
  list.Add("--format", &options->format, "text (default), json or junit", "FORMAT");
  list.Add("--suggest", &options->suggest, "Print a budget file that these logs keep");
  list.Add("--margin", &options->margin, "With --suggest: room to spare (default: 20%)", "PERCENT");
  return {[options] { return RunCheck(*options); }, {{"--format", {"text", "json", "junit"}}}};
}

}  // namespace

const Command checkCommand{"check", "Check that logs keep their budgets",
                           "Exit code: 0 all kept, 1 something broken, 2 it could not be told.\n\n"
                           "Examples:\n"
                           "  tasklog check good.tasklog --suggest > budgets.toml\n"
                           "  tasklog check new.tasklog --budget budgets.toml\n"
                           "  tasklog check new-logs --budget budgets.toml --format junit > check.xml",
                           Declare};

}  // namespace cli
