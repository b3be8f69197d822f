// Why a job waited for longer than normal: what it waited for is in no entry, but who ran when the wait ended
// is.
#include <algorithm>

#include "cause.h"

namespace analysis {
namespace {

// A task that holds a lock goes on whenever it can: during such a wait the processor is hardly idle.
constexpr Ticks leastBusy = 10;  // one part in so many may be idle
// The same task ran at the end of so many in four of the long waits.
constexpr std::size_t threeInFour = 3;
// Another task kept the holder from going on if it ran that many times more than it does all over the log.
constexpr double muchMoreThanUsual = 2;

struct Waiter {
  TaskIndex holder = noTask;
  Ticks idle = 0;
  Ticks holderRan = 0;
  std::vector<Part> others;  // by who ran
};

}  // namespace

static Waiter LookAtWait(const Schedule& schedule, const Stretch& wait) {
  Waiter result;
  result.holder = schedule.RunningBefore(wait.to);
  schedule.ForEachRun(wait, [&](TaskIndex by, const Stretch& run) {
    if (schedule.IsIdle(by)) return void(result.idle += run.Length());
    if (by == result.holder) return void(result.holderRan += run.Length());
    for (Part& other : result.others)
      if (other.task == by) return void(other.ticks += run.Length());
    result.others.push_back({PartKind::preemption, by, run.Length()});
  });
  return result;
}

// Whether the holder ran at the end of most waits that are at least half as long.
static bool EndsWithHolder(const Schedule& schedule, TaskIndex task, TaskIndex holder, Ticks length) {
  std::size_t all = 0, withHolder = 0;
  for (const Stretch& wait : schedule.WaitsIn(task, {schedule.Of().StartTime(), schedule.Of().StopTime()})) {
    if (wait.Length() * 2 < length) continue;
    ++all;
    withHolder += schedule.RunningBefore(wait.to) == holder;
  }
  return withHolder * 4 >= all * threeInFour;
}

void Causes::FollowWaiting(const Delay& delay, const PartExcess& part, Cause& cause) {
  const Usual& usual = habits_.Waiting(delay.task);
  const bool isChanged = usual.changedAt && part.actual > usual.medianBefore;
  cause.isAnomaly = usual.IsHigh(part.actual) || isChanged;
  Stretch longest;
  for (const Stretch& wait : schedule_.WaitsIn(delay.task, delay.stretch))
    if (wait.Length() > longest.Length()) longest = wait;
  Link link = MakeLink(CauseKind::waiting, delay.task, part.Excess(), longest, cause);
  link.normal = part.normal;
  link.actual = part.actual;
  const Waiter seen = LookAtWait(schedule_, longest);
  const PastJob* holding = schedule_.IsIdle(seen.holder) ? nullptr : schedule_.JobAt(seen.holder, longest.to);
  const bool isLock = holding && holding->activation <= longest.from &&
                      seen.idle * leastBusy <= longest.Length() &&
                      EndsWithHolder(schedule_, delay.task, seen.holder, longest.Length());
  if (isLock) link.holder = seen.holder;
  cause.chain.push_back(link);
  if (!isLock || !IsWithin(cause)) return;
  const bool isAnomaly = cause.isAnomaly;
  for (const Part& other : seen.others) {
    const double share =
        static_cast<double>(schedule_.RunTimeOf(other.task)) / static_cast<double>(schedule_.Of().Length());
    const double usually = share * static_cast<double>(longest.Length());
    if (other.ticks * 2 < part.Excess() || static_cast<double>(other.ticks) < muchMoreThanUsual * usually)
      continue;
    const Delay of{seen.holder, longest, {}, other.ticks};
    FollowPreemption(of, {PartKind::preemption, other.task, 0, other.ticks, longest.from}, cause);
    cause.isAnomaly |= isAnomaly;
    return;
  }
  const Usual& execution = habits_.Execution(seen.holder);
  if (seen.holderRan * 2 >= part.Excess() && execution.IsHigh(holding->ExecutionOfCycle()))
    AddLongJob(seen.holder, *holding, std::min(seen.holderRan, part.Excess()), cause);
  cause.isAnomaly |= isAnomaly;
}

}  // namespace analysis
