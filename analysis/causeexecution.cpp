// Between which two testpoints of a long job the time went.
#include <algorithm>
#include <map>

#include "cause.h"

namespace analysis {
namespace {

constexpr std::size_t mostSamples = 256;  // jobs, evenly spread over the log

// The own run time between neighbours; `noSubject` stands for the begin and the end of the job.
struct Leg {
  SubjectIndex begin;
  SubjectIndex end;
  Ticks ticks;
};

std::vector<Leg> LegsOf(const Schedule& schedule, TaskIndex task, const Stretch& job) {
  const std::vector<PastMark>& marks = schedule.Testpoints();
  auto mark = std::partition_point(marks.begin(), marks.end(),
                                   [&](const PastMark& one) { return one.time < job.from; });
  std::vector<Leg> legs;
  Leg leg{noSubject, noSubject, 0};
  const auto passUntil = [&](Ticks time) {
    for (; mark != marks.end() && mark->time <= time && mark->time <= job.to; ++mark) {
      if (mark->running != task) continue;
      leg.end = mark->subject;
      legs.push_back(leg);
      leg = {mark->subject, noSubject, 0};
    }
  };
  schedule.ForEachRun(job, [&](TaskIndex by, const Stretch& run) {
    if (by != task) return;
    Ticks from = run.from;
    while (mark != marks.end() && mark->time < run.to && mark->time <= job.to) {
      if (mark->running == task && mark->time > from) {
        leg.ticks += mark->time - from;
        from = mark->time;
      }
      passUntil(mark->time);
    }
    leg.ticks += run.to - from;
  });
  passUntil(job.to);
  legs.push_back(leg);
  return legs;
}

}  // namespace

void Causes::FindGrownStretch(Link& link) const {
  if (schedule_.Testpoints().empty()) return;
  const std::vector<PastJob>& jobs = schedule_.JobsOf(link.task);
  std::map<std::pair<SubjectIndex, SubjectIndex>, std::vector<std::uint64_t>> normal;
  const std::size_t step = jobs.size() / mostSamples + 1;
  for (std::size_t i = 0; i < jobs.size(); i += step) {
    if (!jobs[i].isWhole || jobs[i].activation == link.from) continue;
    for (const Leg& leg : LegsOf(schedule_, link.task, {jobs[i].activation, jobs[i].end}))
      normal[{leg.begin, leg.end}].push_back(leg.ticks);
  }
  Ticks most = 0;
  for (const Leg& leg : LegsOf(schedule_, link.task, {link.from, link.to})) {
    auto& others = normal[{leg.begin, leg.end}];
    const Ticks usual = others.empty() ? 0 : Quantile(others, 0.5);
    if (leg.ticks <= usual + most) continue;
    most = leg.ticks - usual;
    link.beginMark = leg.begin;
    link.endMark = leg.end;
  }
  if (most * 2 >= link.excess) return;
  link.beginMark = link.endMark = noSubject;
}

}  // namespace analysis
