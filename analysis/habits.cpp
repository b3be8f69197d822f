#include "habits.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace analysis {
namespace {

// So many jobs, evenly spread over the log, show what the parts of a job normally are.
constexpr std::size_t mostSamples = 512;
// Releases are regular when nine in ten intervals lie that near to the period.
constexpr std::uint64_t percentOff = 20;
constexpr std::uint64_t fewestIntervals = 10;
// Outliers are so far from the rest: a share of the median.
// So many jobs of a good log say what is normal.
constexpr std::uint64_t fewestGood = 8;
constexpr double leastLonger = 0.2;
constexpr double leastLater = 0.03;

}  // namespace

Habits::Habits(const Schedule& schedule, const Schedule* good)
    : schedule_(schedule), finder_(schedule), medians_(schedule.TaskCount()), tasks_(schedule.TaskCount()) {
  if (!good) return;
  good_ = std::make_unique<Habits>(*good);
  inGood_.assign(schedule.TaskCount(), noTask);
  ofGood_.assign(good->TaskCount(), noTask);
  std::map<std::string_view, TaskIndex> names;
  for (TaskIndex task = 0; task < good->TaskCount(); ++task)
    names.emplace(good->Of().Tasks()[task].name, task);
  for (TaskIndex task = 0; task < schedule.TaskCount(); ++task) {
    const auto found = names.find(schedule.Of().Tasks()[task].name);
    if (found == names.end()) continue;
    inGood_[task] = found->second;
    ofGood_[found->second] = task;
  }
}

// The parts of a task of the good log, by the tasks of this one.
std::vector<Part> Habits::Translated(const std::vector<Part>& good) const {
  std::vector<Part> parts;
  for (Part part : good) {
    if (part.task != noTask) part.task = ofGood_[part.task];
    if (part.task != noTask || part.kind == PartKind::dispatch) parts.push_back(part);
  }
  return parts;
}

template <class Pick>
const Usual& Habits::Find(TaskIndex task, std::size_t which, double leastShare, Ticks leastDistance,
                          Pick pick) {
  std::optional<Usual>& usual = tasks_[task].usual[which];
  if (usual) return *usual;
  std::vector<std::uint64_t> values;
  values.reserve(schedule_.JobsOf(task).size());
  for (const PastJob& job : schedule_.JobsOf(task))
    if (const auto value = pick(job)) values.push_back(*value);
  usual = FindUsual(values, leastShare, leastDistance);
  if (!AreOfGoodLog(task)) return *usual;
  const Usual& good = good_->Find(inGood_[task], which, leastShare, leastDistance, pick);
  if (good.count >= fewestGood) usual = Against(good, *usual, leastShare);
  return *usual;
}

const Usual& Habits::Execution(TaskIndex task) {
  return Find(task, 0, leastLonger, 2, [](const PastJob& job) {
    return job.isWhole ? std::optional(job.ExecutionOfCycle()) : std::nullopt;
  });
}

const Usual& Habits::Response(TaskIndex task) {
  return Find(task, 1, leastLonger, 2,
              [](const PastJob& job) { return job.isWhole ? std::optional(job.Response()) : std::nullopt; });
}

// Most jobs may not wait at all: then any short wait would stand out.
const Usual& Habits::Waiting(TaskIndex task) {
  return Find(task, 2, leastLonger, Response(task).median / 4 + 2,
              [](const PastJob& job) { return job.isWhole ? std::optional(job.waiting) : std::nullopt; });
}

const Usual& Habits::Interval(TaskIndex task) {
  return Find(task, 3, leastLater, 2, [](const PastJob& job) {
    return job.interval > 0 ? std::optional(job.interval) : std::nullopt;
  });
}

const Activator& Habits::ActivatorOf(TaskIndex task) {
  std::optional<Activator>& activator = tasks_[task].activator;
  return activator ? *activator : activator.emplace(FindActivator(schedule_.JobsOf(task)));
}

// Where a release was lost, an interval is twice as long or more; the short ones tell the period.
Ticks Habits::PeriodOf(TaskIndex task) {
  const Usual& interval = Interval(task);
  if (interval.count < fewestIntervals) return 0;
  const Ticks room = interval.median * percentOff / 100;
  const bool isStable =
      interval.median - interval.quarter <= room && interval.threeQuarters - interval.median <= room;
  return isStable ? interval.median : 0;
}

std::size_t Habits::ChangeOf(TaskIndex task) {
  const std::vector<PastJob>& jobs = schedule_.JobsOf(task);
  std::size_t least = SIZE_MAX;
  for (const Usual* usual : {&Response(task), &Execution(task), &Waiting(task)})
    if (usual->changedAt && usual->medianAfter > usual->medianBefore)
      least = std::min(least, *usual->changedAt);
  if (least == SIZE_MAX) return jobs.size();
  std::size_t whole = 0;
  std::size_t place = 0;
  while (place < jobs.size() && whole < least) whole += jobs[place++].isWhole;
  return place;
}

Ticks Habits::NormalResponse(TaskIndex task) {
  std::optional<Ticks>& response = tasks_[task].response;
  if (response) return *response;
  const std::size_t end = ChangeOf(task);
  if (AreOfGoodLog(task) || end == schedule_.JobsOf(task).size())
    return response.emplace(Response(task).median);
  std::vector<std::uint64_t> responses;
  for (std::size_t i = 0; i < end; ++i)
    if (schedule_.JobsOf(task)[i].isWhole) responses.push_back(schedule_.JobsOf(task)[i].Response());
  return response.emplace(responses.empty() ? 0 : Quantile(responses, 0.5));
}

const std::vector<Part>& Habits::NormalParts(TaskIndex task) {
  std::optional<std::vector<Part>>& parts = tasks_[task].parts;
  if (parts) return *parts;
  if (AreOfGoodLog(task)) return parts.emplace(Translated(good_->NormalParts(inGood_[task])));
  const std::vector<PastJob>& jobs = schedule_.JobsOf(task);
  const std::size_t end = ChangeOf(task);
  const std::size_t step = end / mostSamples + 1;
  for (std::size_t i = 0; i < end; i += step)
    if (jobs[i].isWhole) medians_.Add(finder_.In(task, {jobs[i].activation, jobs[i].end}));
  return parts.emplace(medians_.Take());
}

const std::vector<Part>& Habits::NormalPartsUntil(TaskIndex by, TaskIndex task) {
  std::optional<std::vector<Part>>& parts = tasks_[task].partsUntil;
  if (parts) return *parts;
  const std::vector<PastJob>& jobs = schedule_.JobsOf(task);
  const std::size_t step = jobs.size() / mostSamples + 1;
  for (std::size_t i = 0; i < jobs.size(); i += step) {
    const PastJob* activator = jobs[i].activator == by ? schedule_.JobAt(by, jobs[i].activation) : nullptr;
    if (!activator || activator->cutBegin) continue;
    medians_.Add(finder_.In(by, {activator->activation, jobs[i].activation}));
  }
  return parts.emplace(medians_.Take());
}

}  // namespace analysis
