// Statistics and findings: the very JSON of `tasklog stats` and `tasklog explain`.
#include <numeric>

#include "analysis/findings.h"
#include "cli/explainformat.h"
#include "cli/statsformat.h"
#include "recording.h"

namespace viewer {

// Keys: `from` and `to`, both included; without them all of each lane.
void Statistics(Recording& recording, const Request& request, Answer& answer) {
  const auto format = cli::MakeStatsJson(answer.text);
  for (const auto& lane : recording.Lanes()) {
    const bool isPart = request.Has("from") && request.Has("to");
    const cli::AnalysedLane part =
        isPart ? lane->Of().Between(request.Time("from"), request.Time("to")) : lane->Of();
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

}  // namespace viewer
