#include "latency.h"

#include <algorithm>

namespace analysis {
namespace {

Selector::Kind KindOf(ETLLogType type) {
  if (type == TLLogTestpoint) return Selector::Kind::testpoint;
  return type == TLLogTimingIssue ? Selector::Kind::issue : Selector::Kind::event;
}

}  // namespace

Latencies::Latencies(const Lane& lane, const Selector& begin, const Selector& end)
    : Visitor(wantsJobs | wantsBeginnings | wantsMarks | wantsMarkSubjects),
      begin_(MakeSide(lane, begin)),
      end_(MakeSide(lane, end)) {}

Latencies::Side Latencies::MakeSide(const Lane& lane, const Selector& selector) {
  const Subjects& names = lane.Names();
  Side side{selector.kind, {}, {}, {}};
  side.selects.resize(names.Tasks().size() + names.MarkSubjects().size());
  for (const SubjectIndex subject : selector.In(names)) side.selects[subject] = true;
  if (selector.kind == Selector::Kind::activation) side.pending.resize(names.Tasks().size());
  return side;
}

void Latencies::OnMark(const Mark& mark) {
  if (mark.subject != noSubject) Take(KindOf(mark.type), mark.subject, mark.time);
}

// It counts once it is certain; its place in time is where it was.
void Latencies::OnActivation(const Job& job) {
  ++order_;
  for (Side* side : {&begin_, &end_})
    if (Selects(*side, Selector::Kind::activation, job.task))
      side->pending[job.task] = {job.activation, order_};
}

void Latencies::OnStart(const Job& job) {
  TakePending(job.task);
  Take(Selector::Kind::start, job.task, job.start);
}

void Latencies::OnJob(const Job& job) {
  if (!job.cutEnd) return Take(Selector::Kind::completion, job.task, job.end);
  if (!job.hasRun) TakePending(job.task);
}

void Latencies::OnGap(const Gap& gap) { gaps_.push_back({gap.from, ++order_}); }

void Latencies::OnEnd(Ticks) { Match(); }

void Latencies::Take(Selector::Kind kind, SubjectIndex subject, Ticks time) {
  ++order_;
  for (Side* side : {&begin_, &end_})
    if (Selects(*side, kind, subject)) side->moments.push_back({time, order_});
}

void Latencies::TakePending(TaskIndex task) {
  for (Side* side : {&begin_, &end_})
    if (Selects(*side, Selector::Kind::activation, task)) side->moments.push_back(side->pending[task]);
}

// A moment that is both an end and a begin ends what was open before it begins anew.
void Latencies::Match() {
  const auto isEarlier = [](const Moment& a, const Moment& b) { return a.order < b.order; };
  std::sort(begin_.moments.begin(), begin_.moments.end(), isEarlier);
  std::sort(end_.moments.begin(), end_.moments.end(), isEarlier);
  auto end = end_.moments.begin();
  auto gap = gaps_.begin();
  for (auto begin = begin_.moments.begin(); begin != begin_.moments.end(); ++begin) {
    while (end != end_.moments.end() && end->order <= begin->order) ++end;
    while (gap != gaps_.end() && gap->order < begin->order) ++gap;
    const auto next = begin + 1;
    const bool isReplaced =
        next != begin_.moments.end() && end != end_.moments.end() && next->order < end->order;
    const bool isLost = gap != gaps_.end() && end != end_.moments.end() && gap->order < end->order;
    if (end == end_.moments.end() || isReplaced || isLost)
      ++unmatchedBegins_;
    else
      latencies_.push_back({begin->time, end->time});
  }
}

Values Latencies::Lengths() const {
  Values lengths;
  for (const Latency& latency : latencies_) lengths.Add(latency.Length(), latency.begin);
  return lengths;
}

std::vector<Latency> Latencies::Worst(std::size_t count) const {
  std::vector<Latency> worst(std::min(count, latencies_.size()));
  std::partial_sort_copy(latencies_.begin(), latencies_.end(), worst.begin(), worst.end(),
                         [](const Latency& a, const Latency& b) {
                           return a.Length() != b.Length() ? a.Length() > b.Length() : a.begin < b.begin;
                         });
  return worst;
}

}  // namespace analysis
