// What was wrong on a lane: late jobs with the same cause are one finding.
#pragma once

#include <optional>
#include <vector>

#include "cause.h"
#include "suspects.h"

namespace analysis {

struct Occurrence {
  Ticks activation = 0;
  Ticks completion = 0;
};

// Another task that was late by the same cause.
struct AlsoLate {
  TaskIndex task;
  std::size_t count;
  Ticks excess;  // in all
};

struct Finding {
  TaskIndex task = noTask;  // that was late; `noTask` where it is the lane
  Occurrence job;           // that was late most
  Cause cause;              // of that one
  LateSign sign = LateSign::response;
  SubjectIndex issue = noSubject;
  std::vector<Occurrence> occurrences;  // by time
  std::vector<AlsoLate> alsoLate;
  std::optional<Ticks> since;  // changed for good
  Ticks excess = 0;            // of all occurrences
  double confidence = 0;       // 0 to 1
  bool IsCertain() const { return sign <= LateSign::issue; }
};

struct Explanation {
  std::vector<Finding> findings;  // what the controller itself complains about first, then by what it cost
  std::size_t tasks = 0;          // that had whole jobs
  std::uint64_t jobs = 0;         // looked at
  std::uint64_t asked = 0;        // that the question is about
};

// `good`, when there is one, says what is normal; it and the schedule are borrowed until this returns. Time:
// as a walk, and what the late jobs hold.
Explanation Explain(const Schedule& schedule, const Question& question, const Schedule* good = nullptr);

}  // namespace analysis
