#include "parquet.h"

#include <array>
#include <optional>

#include "analysis/walker.h"
#include "entries.h"
#include "labels.h"
#include "parquettables.h"
#include "text.h"

namespace exporters {
namespace {

using analysis::SubjectIndex;
using analysis::TaskIndex;

struct Tables {
  explicit Tables(Files& files)
      : lanes(files), tasks(files), entries(files), runs(files), jobs(files), gaps(files) {}

  LaneTable lanes;
  TaskTable tasks;
  EntryTable entries;
  RunTable runs;
  JobTable jobs;
  GapTable gaps;
};

// The names of one lane, for one column.
using Names = std::vector<parquet::Label>;

Names NamesOf(const analysis::Subjects& subjects) {
  Names names;
  for (const analysis::Task& task : subjects.Tasks()) names.emplace_back().text = SafeText(task.name);
  for (const analysis::MarkSubject& mark : subjects.MarkSubjects())
    names.emplace_back().text = SafeText(mark.name);
  return names;
}

// Adds one lane. Its tasks have numbers that no other lane uses.
class LaneColumns : public analysis::Visitor {
 public:
  LaneColumns(const Source& source, std::uint32_t lane, std::uint32_t firstTask, Tables& tables)
      : Visitor(wantsRuns | wantsJobs),
        source_(source),
        lane_(lane),
        firstTask_(firstTask),
        tables_(tables) {}

  void AddTasks() {
    TaskTable& table = tables_.tasks;
    for (TaskIndex task = 0; task < source_.lane.Tasks().size(); ++task) {
      if (!source_.Wants(task)) continue;
      table.task.Add(firstTask_ + task);
      table.lane.Add(lane_);
      table.name.Add(runNames_[task].text);
      table.priority.Add(source_.lane.Tasks()[task].priority);
      table.timeSlice.Add(source_.lane.Tasks()[task].timeSlice);
      table.EndRow();
    }
  }

  void AddEntries() {
    EntryTable& table = tables_.entries;
    const auto onEntry = [&](const analysis::Cursor& cursor) {
      table.lane.Add(lane_);
      table.ticks.Add(cursor.Time());
      table.type.Add(types_[cursor.Type() % types_.size()]);
      table.code.Add(cursor.Type());
      AddSubject(cursor.Slot(0), subjects_, table.subject, table.task);
      AddSubject(cursor.Slot(1), runningNames_, table.running, table.runningTask);
      table.EndRow();
    };
    ForEachEntry(source_, onEntry, [&](const analysis::Gap& gap) { AddGap(gap); });
  }

  // Behind the walk: only then it is known for how long nobody was known to run.
  void AddLane() {
    const analysis::Lane& lane = source_.lane;
    LaneTable& table = tables_.lanes;
    table.lane.Add(lane_);
    table.name.Add(SafeText(source_.name));
    if (lane.TicksPerSecond() == 0) table.rate.AddNull();
    if (lane.TicksPerSecond() != 0) table.rate.Add(lane.TicksPerSecond());
    table.start.Add(lane.StartTime());
    table.stop.Add(lane.StopTime());
    table.covered.Add(lane.CoveredTicks());
    table.unknown.Add(unknown_);
    AddTask(source_.conventions.idle, table.idle);
    table.EndRow();
  }

  void OnRun(const analysis::Run& run) override {
    if (run.task == analysis::noTask) unknown_ += run.Length();
    if (run.task != analysis::noTask && !source_.Wants(run.task)) return;
    RunTable& table = tables_.runs;
    table.lane.Add(lane_);
    AddSubject(run.task, runNames_, table.name, table.task);
    table.begin.Add(run.begin);
    table.end.Add(run.end);
    table.cut.Add(!run.IsWhole());
    table.EndRow();
  }

  void OnJob(const analysis::Job& job) override {
    if (!source_.Wants(job.task)) return;
    JobTable& table = tables_.jobs;
    table.lane.Add(lane_);
    table.task.Add(firstTask_ + job.task);
    table.name.Add(jobNames_[job.task]);
    table.activation.Add(job.activation);
    table.start.Add(job.hasRun ? std::optional(job.start) : std::nullopt);
    table.end.Add(job.end);
    table.execution.Add(job.execution);
    table.waiting.Add(job.waiting);
    table.interval.Add(job.hasInterval ? std::optional(job.interval) : std::nullopt);
    table.preemptions.Add(job.preemptions);
    table.slices.Add(job.slices);
    table.waits.Add(job.waits);
    table.events.Add(job.events);
    table.askedEarlier.Add(job.askedEarlier);
    table.cut.Add(!job.IsWhole());
    table.EndRow();
  }

 private:
  void AddTask(SubjectIndex subject, parquet::Uint32Column& column) const {
    source_.lane.Names().IsTask(subject) ? column.Add(firstTask_ + subject) : column.AddNull();
  }

  void AddSubject(SubjectIndex subject, Names& names, parquet::TextColumn& name,
                  parquet::Uint32Column& task) {
    subject == analysis::noSubject ? name.AddNull() : name.Add(names[subject]);
    AddTask(subject, task);
  }

  void AddGap(const analysis::Gap& gap) {
    tables_.gaps.lane.Add(lane_);
    tables_.gaps.from.Add(gap.from);
    tables_.gaps.to.Add(gap.to);
    tables_.gaps.EndRow();
  }

  static std::array<parquet::Label, 16> TypeLabels() {
    std::array<parquet::Label, 16> labels;
    for (std::uint32_t type = 0; type < labels.size(); ++type) labels[type].text = TypeName(type);
    return labels;
  }

  const Source& source_;
  std::uint32_t lane_;
  std::uint32_t firstTask_;
  Tables& tables_;
  std::array<parquet::Label, 16> types_ = TypeLabels();
  Names subjects_ = NamesOf(source_.lane.Names());  // of the columns, each with its own numbers
  Names runningNames_ = subjects_;
  Names runNames_ = subjects_;
  Names jobNames_ = subjects_;
  std::uint64_t unknown_ = 0;
};

class Parquet : public Exporter {
 public:
  explicit Parquet(Files& files) : tables_(files) {}

  void Add(const Source& source) override {
    LaneColumns lane(source, ++lanes_, nextTask_, tables_);
    lane.AddTasks();
    lane.AddEntries();
    analysis::Walk(source.lane, source.conventions, {&lane});
    lane.AddLane();
    nextTask_ += static_cast<std::uint32_t>(source.lane.Tasks().size());
  }

  void End() override {
    for (ParquetFile* file : std::initializer_list<ParquetFile*>{
             &tables_.lanes, &tables_.tasks, &tables_.entries, &tables_.runs, &tables_.jobs, &tables_.gaps})
      file->Finish();
  }

 private:
  Tables tables_;
  std::uint32_t lanes_ = 0;
  std::uint32_t nextTask_ = 1;
};

}  // namespace

std::unique_ptr<Exporter> MakeParquet(Files& files) { return std::make_unique<Parquet>(files); }

}  // namespace exporters
