// Statistics and findings: the very JSON of `tasklog stats` and `tasklog explain`.
#include <algorithm>
#include <numeric>

#include "analysis/findings.h"
#include "cli/difference.h"
#include "cli/explainformat.h"
#include "cli/failure.h"
#include "cli/statsformat.h"
#include "recording.h"

namespace viewer {

// Keys: `from` and `to`, both included; without them all of each lane. `lanes`, such as "0"; without it all.
// `format` "csv" for the CSV of `tasklog stats`.
void Statistics(Recording& recording, const Request& request, Answer& answer) {
  const bool isCsv = request.Has("format") && request.Text("format") == "csv";
  const auto format = isCsv ? cli::MakeStatsCsv(answer.text) : cli::MakeStatsJson(answer.text);
  const std::vector<std::string> wanted = request.Texts("lanes");
  for (std::size_t i = 0; i < recording.Lanes().size(); ++i) {
    if (!wanted.empty() && std::count(wanted.begin(), wanted.end(), std::to_string(i)) == 0) continue;
    const ViewedLane& lane = *recording.Lanes()[i];
    const bool isPart = request.Has("from") && request.Has("to");
    const cli::AnalysedLane part =
        isPart ? lane.Of().Between(request.Time("from"), request.Time("to")) : lane.Of();
    const auto statistics = analysis::Statistics::Of(part.lane, part.conventions);
    std::vector<analysis::TaskIndex> tasks(part.lane.Tasks().size());
    std::iota(tasks.begin(), tasks.end(), 0);
    cli::OrderTasks(tasks, "priority", part.lane, statistics);
    format->Add({part, statistics, std::move(tasks)});
  }
  format->End();
}

// Keys: `limit`, how many findings of each lane.
void Findings(Recording& recording, const Request& request, Answer& answer) {
  const auto format = cli::MakeExplainJson(answer.text, request.Index("limit"));
  for (const auto& lane : recording.Lanes()) {
    const analysis::Question question;
    const analysis::Explanation explanation = analysis::Explain(lane->Schedule(), question);
    format->Add({lane->Of(), explanation, question});
  }
  format->End();
}

namespace {

std::vector<cli::AnalysedLane> LanesOf(const Recording& recording, std::size_t argument) {
  std::vector<cli::AnalysedLane> lanes;
  for (std::size_t i = 0; i < recording.Lanes().size(); ++i)
    if (recording.ArgumentOf(i) == argument) lanes.push_back(recording.Lanes()[i]->Of());
  if (lanes.empty()) throw cli::Failure("diff: nothing of that recording could be read");
  return lanes;
}

}  // namespace

// Keys: `before` and `after`, numbers of arguments. `format` "csv" for the CSV of `tasklog diff`, else it is
// its JSON.
void Diff(Recording& recording, const Request& request, Answer& answer) {
  auto before = LanesOf(recording, request.Index("before"));
  auto after = LanesOf(recording, request.Index("after"));
  const bool named = before.size() != 1 || after.size() != 1;
  const cli::Difference difference = cli::CompareSides(std::move(before), std::move(after), named);
  const bool isCsv = request.Has("format") && request.Text("format") == "csv";
  isCsv ? cli::AppendDiffCsv(answer.text, difference) : cli::AppendDiffJson(answer.text, difference);
}

}  // namespace viewer
