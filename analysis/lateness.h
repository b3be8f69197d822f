// Which jobs are late, and what says so.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "habits.h"

namespace analysis {

// What marks a job as late; the first three do so by themselves.
enum class LateSign : std::uint8_t {
  asked,           // the caller wants to know
  nextActivation,  // it was still at work when the task's next release was due
  issue,           // a timing issue was raised for it
  change,          // since some time all jobs of the task are so
  response,        // an outlier of the task's responses
  execution,       // of its execution times
  waiting,         // of its waits
  interval,        // of its activation intervals
};
std::string_view NameOf(LateSign sign);

struct LateJob {
  TaskIndex task;
  std::size_t place;  // in Schedule::JobsOf()
  LateSign sign;
  SubjectIndex issue = noSubject;

  // It came too late itself, in place of taking too long.
  bool IsActivation() const { return sign == LateSign::interval; }
  bool IsCertain() const { return sign <= LateSign::issue; }
};

// A time after the activation at which jobs that are not done by then get a timing issue.
struct Deadline {
  Ticks length;
  SubjectIndex issue;
};
// By TaskIndex.
std::vector<std::vector<Deadline>> FindDeadlines(const Schedule& schedule, Habits& habits);

// Of one task, by time, each job at most once with its strongest sign. `limited`: a task that is certainly
// late again and again is not called so.
std::vector<LateJob> FindLateJobs(const Schedule& schedule, Habits& habits, TaskIndex task,
                                  const std::vector<Deadline>& deadlines, bool limited);

}  // namespace analysis
