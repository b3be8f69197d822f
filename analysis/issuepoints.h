// At which point of a task's own work timing issues are raised.
#pragma once

#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "schedule.h"

namespace analysis {

// What a task did from the beginning of its jobs until it raised an issue, over some of these issues.
struct IssuePoints {
  Ticks least = UINT64_MAX;
  Ticks most = 0;
  std::size_t raised = 0;  // by that task, in a job
  std::size_t looked = 0;  // at issues of the kind, whoever raised them
};

// Finds them, each pair of a task and a kind of issue once. Time: the runs once, then at most `mostSamples`
// searches for each pair that is asked for. Memory: 16 bytes a run, 4 an issue.
class IssuePointFinder {
 public:
  // The schedule must outlive it.
  explicit IssuePointFinder(const Schedule& schedule);

  std::size_t CountOf(SubjectIndex issue) const { return issues_.at(issue).size(); }
  const IssuePoints& PointsOf(TaskIndex by, SubjectIndex issue);

 private:
  static constexpr std::size_t mostSamples = 256;

  struct Run {
    Ticks end;
    Ticks total;  // of the runs of its task until then
  };
  // The runs of all tasks, of each by time, and where those of a task begin.
  struct Runs {
    explicit Runs(const Schedule& schedule);
    Ticks RunTimeUntil(TaskIndex task, Ticks time) const;

    std::vector<Run> all;
    std::vector<std::size_t> begins;
  };

  IssuePoints Find(TaskIndex by, const std::vector<std::uint32_t>& issues);

  const Schedule& schedule_;
  std::map<SubjectIndex, std::vector<std::uint32_t>> issues_;  // places in Schedule::Issues()
  std::map<std::pair<TaskIndex, SubjectIndex>, IssuePoints> found_;
  std::optional<Runs> runs_;  // once they are needed
};

}  // namespace analysis
