#include "tables.h"

#include <fmt/format.h>

#include <utility>

#include "analysis/latency.h"
#include "analysis/walker.h"
#include "arrays.h"
#include "cli/failure.h"
#include "cli/latencyformat.h"
#include "cli/latencyside.h"

namespace py = pybind11;

namespace python {
namespace {

using analysis::Job;
using analysis::Run;
using Flags = std::vector<std::uint8_t>;
using Counts = std::vector<std::uint32_t>;
using Times = std::vector<std::uint64_t>;
using Tasks = std::vector<std::int32_t>;

std::int32_t NumberOf(analysis::SubjectIndex subject) { return static_cast<std::int32_t>(subject); }

class RunColumns : public analysis::Visitor {
 public:
  RunColumns() : Visitor(wantsRuns) {}

  void OnRun(const Run& run) override {
    task_.push_back(NumberOf(run.task));
    begin_.push_back(run.begin);
    end_.push_back(run.end);
    cutBegin_.push_back(run.cutBegin);
    cutEnd_.push_back(run.cutEnd);
  }

  py::dict Take() {
    py::dict columns;
    columns["task"] = ArrayOf(std::move(task_));
    columns["begin"] = ArrayOf(std::move(begin_));
    columns["end"] = ArrayOf(std::move(end_));
    columns["cut_begin"] = FlagsOf(std::move(cutBegin_));
    columns["cut_end"] = FlagsOf(std::move(cutEnd_));
    return columns;
  }

 private:
  Tasks task_;
  Times begin_, end_;
  Flags cutBegin_, cutEnd_;
};

class JobColumns : public analysis::Visitor {
 public:
  JobColumns() : Visitor(wantsJobs) {}

  void OnJob(const Job& job) override {
    task_.push_back(NumberOf(job.task));
    activator_.push_back(NumberOf(job.activator));
    activation_.push_back(job.activation);
    start_.push_back(job.start);
    end_.push_back(job.end);
    execution_.push_back(job.execution);
    waiting_.push_back(job.waiting);
    response_.push_back(job.Response());
    startLatency_.push_back(job.hasRun ? job.StartLatency() : 0);
    interval_.push_back(job.interval);
    preemptions_.push_back(job.preemptions);
    slices_.push_back(job.slices);
    waits_.push_back(job.waits);
    events_.push_back(job.events);
    TakeFlags(job);
  }

  // Where a column has no value, its "no_..." says so.
  py::dict Take() {
    py::dict columns;
    columns["task"] = ArrayOf(std::move(task_));
    columns["activation"] = ArrayOf(std::move(activation_));
    columns["start"] = ArrayOf(std::move(start_));
    columns["end"] = ArrayOf(std::move(end_));
    columns["response"] = ArrayOf(std::move(response_));
    columns["execution"] = ArrayOf(std::move(execution_));
    columns["start_latency"] = ArrayOf(std::move(startLatency_));
    columns["interval"] = ArrayOf(std::move(interval_));
    columns["waiting"] = ArrayOf(std::move(waiting_));
    columns["preemptions"] = ArrayOf(std::move(preemptions_));
    columns["slices"] = ArrayOf(std::move(slices_));
    columns["waits"] = ArrayOf(std::move(waits_));
    columns["events"] = ArrayOf(std::move(events_));
    columns["activator"] = ArrayOf(std::move(activator_));
    columns["by_event"] = FlagsOf(std::move(byEvent_));
    columns["asked_earlier"] = FlagsOf(std::move(askedEarlier_));
    columns["cut_begin"] = FlagsOf(std::move(cutBegin_));
    columns["cut_end"] = FlagsOf(std::move(cutEnd_));
    columns["no_start"] = FlagsOf(std::move(noStart_));
    columns["no_interval"] = FlagsOf(std::move(noInterval_));
    return columns;
  }

 private:
  void TakeFlags(const Job& job) {
    byEvent_.push_back(job.byEvent);
    askedEarlier_.push_back(job.askedEarlier);
    cutBegin_.push_back(job.cutBegin);
    cutEnd_.push_back(job.cutEnd);
    noStart_.push_back(!job.hasRun);
    noInterval_.push_back(!job.hasInterval);
  }

  Tasks task_, activator_;
  Times activation_, start_, end_, execution_, waiting_, response_, startLatency_, interval_;
  Counts preemptions_, slices_, waits_, events_;
  Flags byEvent_, askedEarlier_, cutBegin_, cutEnd_, noStart_, noInterval_;
};

template <class Columns>
py::dict Collect(const Lane& lane) {
  Columns columns;
  {
    const py::gil_scoped_release others;
    const cli::AnalysedLane& analysed = lane.Analysed();
    analysis::Walk(analysed.lane, analysed.conventions, {&columns});
  }
  return columns.Take();
}

struct Measured {
  Times begins, ends;
  std::string json;
};

Measured Measure(const cli::AnalysedLane& lane, const std::string& begin, const std::string& end) {
  cli::LatencySide sides[] = {{"begin", begin}, {"end", end}};
  for (cli::LatencySide& side : sides) {
    side.IsIn(lane.lane);
    side.Finish();
  }
  analysis::Latencies latencies(lane.lane, sides[0].Which(), sides[1].Which());
  analysis::Walk(lane.lane, lane.conventions, {&latencies});
  fmt::memory_buffer out;
  const auto format = cli::MakeLatencyJson(out, sides[0].Which(), sides[1].Which());
  format->Add({lane, latencies, {}});
  format->End();
  Measured measured{{}, {}, fmt::to_string(out)};
  for (const analysis::Latency& latency : latencies.All()) {
    measured.begins.push_back(latency.begin);
    measured.ends.push_back(latency.end);
  }
  return measured;
}

}  // namespace

py::dict RunsOf(const Lane& lane) { return Collect<RunColumns>(lane); }

py::dict JobsOf(const Lane& lane) { return Collect<JobColumns>(lane); }

py::dict LatenciesOf(const Lane& lane, const std::string& begin, const std::string& end) {
  Measured measured;
  {
    const py::gil_scoped_release others;
    measured = Measure(lane.Analysed(), begin, end);
  }
  py::dict columns;
  columns["begin"] = ArrayOf(std::move(measured.begins));
  columns["end"] = ArrayOf(std::move(measured.ends));
  columns["json"] = measured.json;
  return columns;
}

py::list SubjectsOf(const Lane& lane) {
  const analysis::Subjects& names = lane.Lanes().Names();
  py::list subjects;
  for (std::size_t i = 0; i < names.Tasks().size() + names.MarkSubjects().size(); ++i)
    subjects.append(py::none());
  for (const tasklog::Category category : lane.Loaded().log.Categories()) {
    const analysis::SubjectIndex number = names.Find(category.Handle());
    subjects[number] = py::make_tuple(NameOf(category.Name()), category.Type(), category.Id(),
                                      category.Priority(), category.TimeSlice());
  }
  return subjects;
}

py::dict GapsOf(const Lane& lane) {
  Times from, to;
  for (const analysis::Gap& gap : lane.IsMerged() ? std::vector<analysis::Gap>() : lane.Lanes().Gaps()) {
    from.push_back(gap.from);
    to.push_back(gap.to);
  }
  py::dict columns;
  columns["begin"] = ArrayOf(std::move(from));
  columns["end"] = ArrayOf(std::move(to));
  return columns;
}

}  // namespace python
