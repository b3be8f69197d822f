// Why a job waited for longer than normal: what it waited for is in no entry, but who ran when the wait ended
// is.
#include <algorithm>

#include "cause.h"

namespace analysis {
namespace {

// A task that holds a lock goes on whenever it can: during such a wait the processor is hardly idle.
constexpr Ticks leastBusy = 10;  // one part in so many may be idle
// The same task ran at the end of so many in four of the long waits.
constexpr std::ptrdiff_t threeInFour = 3;
// Another task kept the holder from going on if it ran that many times more than it does all over the log.
constexpr double muchMoreThanUsual = 2;

}  // namespace

Causes::Waiter Causes::LookAtWait(const Stretch& wait) const {
  Waiter result;
  result.holder = schedule_.RunningBefore(wait.to);
  schedule_.ForEachRun(wait, [&](TaskIndex by, const Stretch& run) {
    if (schedule_.IsIdle(by)) return void(result.idle += run.Length());
    if (by == result.holder) return void(result.holderRan += run.Length());
    for (Part& other : result.others)
      if (other.task == by) return void(other.ticks += run.Length());
    result.others.push_back({PartKind::preemption, by, run.Length()});
  });
  return result;
}

Causes::WaitEnds Causes::LookAtWaitsOf(TaskIndex task) const {
  WaitEnds ends;
  for (const Stretch& wait :
       schedule_.WaitsIn(task, {schedule_.Of().StartTime(), schedule_.Of().StopTime()})) {
    ends.all.push_back(wait.Length());
    ends.byHolder[schedule_.RunningBefore(wait.to)].push_back(wait.Length());
  }
  std::sort(ends.all.begin(), ends.all.end());
  for (auto& [holder, lengths] : ends.byHolder) std::sort(lengths.begin(), lengths.end());
  return ends;
}

// Whether the holder ran at the end of most waits that are at least half as long.
bool Causes::EndsWithHolder(TaskIndex task, TaskIndex holder, Ticks length) {
  const auto cached = waitEnds_.find(task);
  WaitEnds& ends = cached != waitEnds_.end() ? cached->second : waitEnds_[task] = LookAtWaitsOf(task);
  const auto countLong = [length](const std::vector<Ticks>& lengths) {
    return lengths.end() - std::lower_bound(lengths.begin(), lengths.end(), length / 2);
  };
  return countLong(ends.byHolder[holder]) * 4 >= countLong(ends.all) * threeInFour;
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
  const Waiter seen = LookAtWait(longest);
  const PastJob* holding = schedule_.IsIdle(seen.holder) ? nullptr : schedule_.JobAt(seen.holder, longest.to);
  const bool isLock = holding && holding->activation <= longest.from &&
                      seen.idle * leastBusy <= longest.Length() &&
                      EndsWithHolder(delay.task, seen.holder, longest.Length());
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
  FollowHolder(seen, *holding, longest, part.Excess(), cause);
  cause.isAnomaly |= isAnomaly;
}

// What grew in the holder's job until then: it may have come to the lock at a time when it normally is done.
void Causes::FollowHolder(const Waiter& seen, const PastJob& holding, const Stretch& wait, Ticks excess,
                          Cause& cause) {
  const Usual& execution = habits_.Execution(seen.holder);
  if (seen.holderRan * 2 >= excess && execution.IsHigh(holding.ExecutionOfCycle()))
    return AddLongJob(seen.holder, holding, std::min(seen.holderRan, excess), cause);
  const Stretch until{holding.activation, wait.to};
  const Delay delay = DelayOf(seen.holder, until, habits_.NormalParts(seen.holder), 0);
  for (const PartExcess& part : delay.parts)
    if (part.kind == PartKind::preemption && part.Excess() * 2 >= excess && part.normal * 2 <= part.actual)
      return FollowPreemption(delay, part, cause);
}

}  // namespace analysis
