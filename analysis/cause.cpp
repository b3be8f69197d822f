#include "cause.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace analysis {
namespace {

// A part that grew by that much of what the largest did is told beside it.
constexpr double nearlyAsMuch = 0.8;
// A lower task normally keeps this one from running for less than that part of what it did now.
constexpr Ticks muchMore = 3;

double ShareOf(Ticks part, Ticks whole) {
  return whole == 0 ? 0 : static_cast<double>(part) / static_cast<double>(whole);
}

Ticks Beyond(Ticks actual, Ticks normal) { return actual > normal ? actual - normal : 0; }

PartKind Next(PartKind kind) { return static_cast<PartKind>(static_cast<unsigned>(kind) + 1); }

bool IsBefore(const PartExcess& a, const PartExcess& b) {
  return std::tie(a.kind, a.task) < std::tie(b.kind, b.task);
}

// By kind and task. The parts of a job are many and those of one kind are in order; normal ones are few.
std::vector<PartExcess> Against(const std::vector<Part>& actual, const std::vector<Part>& normal) {
  std::vector<PartExcess> parts;
  parts.reserve(actual.size() + normal.size());
  for (auto kind = PartKind::execution; parts.size() < actual.size(); kind = Next(kind))
    for (const Part& part : actual)
      if (part.kind == kind) parts.push_back({part.kind, part.task, 0, part.ticks, 0});
  for (const Part& part : normal) parts.push_back({part.kind, part.task, part.ticks, 0, 0});
  const auto middle = parts.begin() + static_cast<std::ptrdiff_t>(actual.size());
  std::sort(middle, parts.end(), IsBefore);
  std::inplace_merge(parts.begin(), middle, parts.end(), IsBefore);
  std::size_t count = 0;
  for (const PartExcess& part : parts) {
    if (count == 0 || IsBefore(parts[count - 1], part)) {
      parts[count++] = part;
      continue;
    }
    parts[count - 1].normal += part.normal;
    parts[count - 1].actual += part.actual;
  }
  parts.resize(count);
  return parts;
}

}  // namespace

std::string_view NameOf(CauseKind kind) {
  static constexpr std::string_view names[] = {"execution",
                                               "preemption-longer",
                                               "preemption-more-often",
                                               "preemption-coincidence",
                                               "blocking",
                                               "sharing",
                                               "dispatch",
                                               "waiting",
                                               "late-activation",
                                               "overload",
                                               "lost-records",
                                               "unknown"};
  return names[static_cast<std::size_t>(kind)];
}

Cause Causes::Of(const LateJob& late) {
  const PastJob& job = schedule_.JobsOf(late.task)[late.place];
  Cause cause;
  if (late.IsActivation()) {
    cause.normal = habits_.Interval(late.task).median;
    cause.actual = job.interval;
    FollowActivation(late.task, late.place, cause);
    return cause;
  }
  cause.normal = habits_.NormalResponse(late.task);
  cause.actual = job.Response();
  const Delay delay =
      DelayOf(late.task, {job.activation, job.end}, habits_.NormalParts(late.task), cause.normal);
  Follow(delay, cause);
  cause.parts = delay.parts;
  return cause;
}

void Causes::Complete(TaskIndex task, const Stretch& job, Cause& cause) const {
  for (std::vector<Link>* links : {&cause.chain, &cause.also}) {
    for (Link& link : *links) {
      if (link.kind == CauseKind::execution) FindGrownStretch(link);
      if (link.activator != noTask) FindRaisePoint(link);
    }
  }
  OrderParts(task, job, cause.parts);
}

void Causes::FindRaisePoint(Link& link) const {
  const PastJob* activator = schedule_.JobAt(link.activator, link.at);
  const std::vector<PastMark>& passed = schedule_.Testpoints();
  auto mark = std::partition_point(passed.begin(), passed.end(),
                                   [&](const PastMark& one) { return one.time <= link.at; });
  while (activator && mark != passed.begin() && (--mark)->time >= activator->activation) {
    if (mark->running != link.activator) continue;
    link.raisedAt = mark->subject;
    return;
  }
}

void Causes::OrderParts(TaskIndex task, const Stretch& job, std::vector<PartExcess>& parts) const {
  std::map<TaskIndex, Ticks> firsts;  // idle and unknown time under `noTask`
  schedule_.ForEachRun(job, [&](TaskIndex by, const Stretch& run) {
    firsts.try_emplace(schedule_.IsIdle(by) ? noTask : by, run.from);
  });
  const std::vector<Stretch> waits = schedule_.WaitsIn(task, job);
  for (PartExcess& part : parts) {
    const auto found = firsts.find(part.task);
    part.first = found == firsts.end() ? job.to : found->second;
    if (part.kind == PartKind::waiting) part.first = waits.empty() ? job.to : waits.front().from;
  }
  std::stable_sort(parts.begin(), parts.end(),
                   [](const PartExcess& a, const PartExcess& b) { return a.first < b.first; });
}

Causes::Delay Causes::DelayOf(TaskIndex task, const Stretch& stretch, const std::vector<Part>& normal,
                              Ticks normalLength) {
  return {task, stretch, Against(finder_.In(task, stretch), normal), Beyond(stretch.Length(), normalLength)};
}

Link Causes::MakeLink(CauseKind kind, TaskIndex task, Ticks excess, const Stretch& stretch,
                      const Cause& cause) const {
  Link link;
  link.kind = kind;
  link.task = task;
  link.excess = excess;
  link.share = std::min(1.0, ShareOf(excess, cause.Excess()));
  link.from = link.at = stretch.from;
  link.to = stretch.to;
  return link;
}

// Against tasks that lead back to each other.
bool Causes::IsWithin(const Cause& cause) const { return cause.chain.size() < longestChain; }

void Causes::Follow(const Delay& delay, Cause& cause) {
  const auto larger = [](const PartExcess& a, const PartExcess& b) { return a.Excess() < b.Excess(); };
  const auto most = std::max_element(delay.parts.begin(), delay.parts.end(), larger);
  if (most->Excess() * 2 < delay.excess || most->Excess() <= 1) {
    if (!FollowOwnBurst(delay, cause) && cause.chain.empty())
      cause.chain.push_back(MakeLink(CauseKind::unknown, delay.task, delay.excess, delay.stretch, cause));
    return;
  }
  const bool isDirect = cause.chain.empty();
  FollowPart(delay, *most, cause);
  if (!cause.isAnomaly && FollowOwnBurst(delay, cause)) return;
  if (!isDirect) return;
  for (const PartExcess& part : delay.parts) {
    const auto enough = static_cast<Ticks>(nearlyAsMuch * static_cast<double>(most->Excess()));
    if (&part == &*most || part.Excess() <= enough) continue;
    Cause other;
    other.normal = cause.normal;
    other.actual = cause.actual;
    FollowPart(delay, part, other);
    cause.also.push_back(other.chain.front());
  }
}

void Causes::FollowPart(const Delay& delay, const PartExcess& part, Cause& cause) {
  if (!IsWithin(cause)) return;
  switch (part.kind) {
    case PartKind::execution: return FollowExecution(delay, part, cause);
    case PartKind::preemption: return FollowPreemption(delay, part, cause);
    case PartKind::sharing: return FollowSharing(delay, part, cause);
    case PartKind::waiting: return FollowWaiting(delay, part, cause);
    case PartKind::blocking:
      cause.isAnomaly = part.actual > muchMore * part.normal;
      cause.chain.push_back(MakeLink(CauseKind::blocking, part.task, part.Excess(), delay.stretch, cause));
      break;
    case PartKind::dispatch:
      cause.isAnomaly = part.actual > muchMore * part.normal;
      cause.chain.push_back(MakeLink(CauseKind::dispatch, delay.task, part.Excess(), delay.stretch, cause));
      break;
  }
  cause.chain.back().normal = part.normal;
  cause.chain.back().actual = part.actual;
}

// The job itself ran long; or events that came meanwhile made several cycles of it.
void Causes::FollowExecution(const Delay& delay, const PartExcess& part, Cause& cause) {
  const PastJob* job = schedule_.JobAt(delay.task, delay.stretch.to);
  const Usual& usual = habits_.Execution(delay.task);
  const bool isUsualCycle =
      job && job->events > 0 && job->ExecutionOfCycle() <= usual.median + usual.median / 4;
  const CauseKind kind = isUsualCycle ? CauseKind::preemptionMoreOften : CauseKind::execution;
  Link link = MakeLink(kind, delay.task, part.Excess(), delay.stretch, cause);
  link.normal = part.normal;
  link.actual = part.actual;
  link.normalCount = 1;
  link.count = job ? job->events + 1 : 1;
  const bool isChanged = usual.changedAt && part.actual > usual.medianBefore + usual.medianBefore / 8;
  cause.isAnomaly = isUsualCycle || isChanged || (job && usual.IsHigh(job->ExecutionOfCycle()));
  cause.chain.push_back(link);
}

void Causes::FollowActivation(TaskIndex task, std::size_t place, Cause& cause) {
  const std::vector<PastJob>& jobs = schedule_.JobsOf(task);
  const PastJob& job = jobs[place];
  const Ticks normal = habits_.Interval(task).median;
  const Ticks excess = Beyond(job.interval, normal);
  if (place > 0 && IsWithin(cause) && !cause.chain.empty() && jobs[place - 1].Response() > normal) {
    const PastJob& before = jobs[place - 1];
    return Follow(DelayOf(task, {before.activation, before.end}, habits_.NormalParts(task),
                          habits_.Response(task).median),
                  cause);
  }
  const Activator& answer = habits_.ActivatorOf(task);
  const TaskIndex by = answer.by == Activator::By::task ? answer.task : noTask;
  const PastJob* activator = by == noTask ? nullptr : schedule_.JobAt(by, job.activation);
  if (!activator || !IsWithin(cause)) {
    cause.isAnomaly = true;
    if (!cause.chain.empty()) return;
    cause.chain.push_back(MakeLink(CauseKind::lateActivation, task, excess,
                                   {job.activation - job.interval, job.activation}, cause));
    return;
  }
  Link link = MakeLink(CauseKind::lateActivation, by, excess, {activator->activation, job.activation}, cause);
  link.at = job.activation;
  cause.chain.push_back(link);
  const std::vector<Part>& normalParts = habits_.NormalPartsUntil(by, task);
  Ticks normalLength = 0;
  for (const Part& part : normalParts) normalLength += part.ticks;
  const Delay delay = DelayOf(by, {activator->activation, job.activation}, normalParts, normalLength);
  if (delay.excess * 2 >= excess) return Follow(delay, cause);
  const auto index = static_cast<std::size_t>(activator - schedule_.JobsOf(by).data());
  cause.isAnomaly = true;
  if (Beyond(activator->interval, habits_.Interval(by).median) * 2 >= excess)
    FollowActivation(by, index, cause);
}

}  // namespace analysis
