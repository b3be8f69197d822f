#include "explainquestion.h"

#include "bounds.h"
#include "failure.h"
#include "suggest.h"
#include "text.h"

namespace cli {

ExplainQuestion::ExplainQuestion(const ExplainOptions& options)
    : options_(options), at_(CheckedBound("--at", options.at)) {
  if (!options.over) return;
  over_ = ParseDuration(*options.over);
  if (!over_) throw UsageError("--over: " + Quoted(*options.over) + " is not a duration such as 2ms");
}

std::optional<analysis::Question> ExplainQuestion::For(const AnalysedLane& lane) {
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

void ExplainQuestion::Finish() const {
  if (options_.task && !taskFound_)
    throw Failure("--task: there is no task " + Quoted(*options_.task) +
                  Suggestion(*options_.task, tasksSeen_));
  if (options_.issue && !issueFound_)
    throw Failure("--issue: there is no timing issue " + Quoted(*options_.issue) +
                  Suggestion(*options_.issue, issuesSeen_));
}

}  // namespace cli
