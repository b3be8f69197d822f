// tasklog explain: what was late, and why.
#include <algorithm>

#include "bounds.h"
#include "commandline.h"
#include "explainformat.h"
#include "gate.h"
#include "stdoutwriter.h"
#include "suggest.h"
#include "text.h"

namespace cli {
namespace {

struct Options {
  AnalysisOptions common;
  std::optional<std::string> task;
  std::optional<std::string> at;
  std::optional<std::string> issue;
  std::optional<std::string> over;
  std::optional<std::string> against;
  std::string limit = "5";
  std::string format = "text";
};

// What is asked, as typed and then for each lane.
class Asked {
 public:
  explicit Asked(const Options& options) : options_(options), at_(CheckedBound("--at", options.at)) {
    if (!options.over) return;
    over_ = ParseDuration(*options.over);
    if (!over_) throw UsageError("--over: " + Quoted(*options.over) + " is not a duration such as 2ms");
  }

  // Nothing where the lane does not have what is asked about.
  std::optional<analysis::Question> For(const AnalysedLane& lane) {
    analysis::Question question;
    if (options_.task) {
      const auto tasks = lane.lane.Names().TasksNamed(*options_.task);
      for (const analysis::Task& task : lane.lane.Tasks()) tasksSeen_.push_back(task.name);
      if (tasks.empty()) return std::nullopt;
      taskFound_ = true;
      question.task = tasks.front();
    }
    if (options_.issue) {
      question.issues = lane.lane.Names().MarkSubjectsNamed(TLCatTimingIssue, *options_.issue);
      for (const analysis::MarkSubject& mark : lane.lane.Names().MarkSubjects())
        if (mark.kind == TLCatTimingIssue) issuesSeen_.push_back(mark.name);
      if (question.issues.empty()) return std::nullopt;
      issueFound_ = true;
    }
    if (at_) question.at = BoundsIn(lane.loaded->log, at_, {}, "explain", "explain").from;
    if (over_) {
      if (lane.lane.TicksPerSecond() == 0)
        throw Failure("--over: the tick rate of " + Quoted(lane.source.shownAs) + " is unknown");
      question.over = over_->Ticks(lane.lane.TicksPerSecond());
    }
    return question;
  }

  // After the last lane. Throws Failure.
  void Finish() const {
    if (options_.task && !taskFound_)
      throw Failure("--task: there is no task " + Quoted(*options_.task) +
                    Suggestion(*options_.task, tasksSeen_));
    if (options_.issue && !issueFound_)
      throw Failure("--issue: there is no timing issue " + Quoted(*options_.issue) +
                    Suggestion(*options_.issue, issuesSeen_));
  }

 private:
  const Options& options_;
  std::optional<TimePoint> at_;
  std::optional<Duration> over_;
  bool taskFound_ = false;
  bool issueFound_ = false;
  std::vector<std::string> tasksSeen_;
  std::vector<std::string> issuesSeen_;
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
  Asked asked(options);
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

Declared Declare(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  DeclareAnalysisOptions(app, options->common);
  app.add_option("--task", options->task, "Only what made this task late")->type_name("NAME");
  app.add_option("--at", options->at, "Explain the jobs under way at this time")->type_name("TIME");
  app.add_option("--issue", options->issue, "Explain the jobs under way at this timing issue")
      ->type_name("NAME");
  app.add_option("--over", options->over, "Explain all jobs that took longer: 2ms")->type_name("LENGTH");
  app.add_option("--against", options->against, "A good log, which says what is normal")->type_name("LOG");
  app.add_option("--limit", options->limit, "How many findings to tell of each lane (default: 5)")
      ->type_name("N");
  app.add_option("--format", options->format, "text (default) or json")->type_name("FORMAT");
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
