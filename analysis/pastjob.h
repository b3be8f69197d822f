// A job that is over, as it is kept for looking back.
#pragma once

#include <vector>

#include "visitor.h"

namespace analysis {

struct PastJob {
  Ticks activation;
  Ticks end;
  Ticks execution;
  Ticks waiting;
  Ticks interval;            // from the activation before; 0: not known
  Ticks activatorExecution;  // see Job
  std::uint32_t events;      // that may ask for another cycle
  TaskIndex activator;
  bool byEvent;
  bool startsAtOnce;  // within a tick of its activation
  bool isWhole;
  bool cutBegin;

  Ticks Response() const { return end - activation; }
  // Where events came during a job, it may be several cycles.
  Ticks ExecutionOfCycle() const { return execution / (std::uint64_t{events} + 1); }
};

}  // namespace analysis
