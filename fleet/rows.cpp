#include "rows.h"

#include <optional>

#include "columns.h"
#include "exporters/text.h"

namespace fleet {
namespace {

using analysis::Quantity;
using analysis::TaskStatistics;
using exporters::SafeText;
using Number = std::optional<std::uint64_t>;

constexpr Quantity quantities[] = {Quantity::execution, Quantity::response, Quantity::startLatency,
                                   Quantity::activationInterval, Quantity::run};
static_assert(std::size(quantities) == analysis::quantityCount);

struct Counter {
  const char* name;
  std::uint64_t TaskStatistics::*count;
};
constexpr Counter counters[] = {
    {"jobs", &TaskStatistics::jobs},
    {"cut", &TaskStatistics::cut},
    {"asked_earlier", &TaskStatistics::askedEarlier},
    {"dropped", &TaskStatistics::dropped},
    {"preemptions", &TaskStatistics::preemptions},
    {"slices", &TaskStatistics::slices},
    {"waits", &TaskStatistics::waits},
    {"testpoints", &TaskStatistics::testpoints},
    {"issues", &TaskStatistics::issues},
};

void AddText(parquet::TextColumn& column, const std::string& text) {
  text.empty() ? column.AddNull() : column.Add(text);
}

}  // namespace

// What a row leaves out is null. Texts are null where they are empty.
struct Rows::Row {
  std::string kind, lane = {}, task = {};
  Number rate = {}, count = {};
  std::string status = {}, message = {}, source = {}, target = {}, tool = {};
  Number start = {}, stop = {}, covered = {}, unknown = {}, switches = {};
  std::optional<double> busy = {};
  std::string statistic = {};
  std::optional<std::uint32_t> priority = {};
  std::optional<double> share = {};
  std::optional<analysis::Summary> summary = {};
  std::optional<std::int32_t> finding = {};
  std::string cause = {}, causeTask = {}, sign = {}, issue = {}, verdict = {};
  Number at = {}, since = {}, normal = {}, actual = {}, excess = {};
  std::optional<double> confidence = {};
};

Rows::Rows(const Recording& recording, std::string& out)
    : recording_(recording), columns_(std::make_unique<Columns>(out)) {}

Rows::~Rows() = default;

void Rows::AddBroken(std::string_view lane, std::string_view message) {
  Row row;
  row.kind = "lane";
  row.lane = SafeText(lane);
  row.status = "broken";
  row.message = SafeText(message);
  Put(row);
}

void Rows::AddLane(std::string_view name, const analysis::Lane& lane, const analysis::Statistics& statistics,
                   std::uint64_t entries) {
  lane_ = &lane;
  laneName_ = SafeText(name);
  findings_ = 0;
  Row row = NewRow("lane");
  row.status = "ok";
  row.count = entries;
  row.start = lane.StartTime();
  row.stop = lane.StopTime();
  row.covered = lane.CoveredTicks();
  row.unknown = statistics.UnknownTicks();
  row.switches = statistics.Switches();
  row.busy = statistics.Busy();
  Put(row);
  for (analysis::TaskIndex task = 0; task < lane.Tasks().size(); ++task)
    AddTask(task, statistics.Tasks()[task], statistics.LoadOf(task));
}

void Rows::AddTask(analysis::TaskIndex index, const TaskStatistics& task, std::optional<double> load) {
  Row row = NewRow("statistic");
  row.task = SafeText(lane_->Tasks()[index].name);
  row.priority = lane_->Tasks()[index].priority;
  row.statistic = "load";
  row.count = task.loadTicks;
  row.share = load;
  Put(row);
  row.share.reset();
  for (const Counter& counter : counters) {
    row.statistic = counter.name;
    row.count = task.*counter.count;
    Put(row);
  }
  for (const Quantity quantity : quantities) {
    row.statistic = exporters::SnakeCase(NameOf(quantity));
    const analysis::Summary summary = task.Of(quantity).Summarize();
    row.count = summary.count;
    row.summary = summary.count > 0 ? std::optional(summary) : std::nullopt;
    Put(row);
  }
}

void Rows::AddFinding(const analysis::Finding& finding, const std::string& verdict) {
  const auto nameOf = [&](analysis::SubjectIndex subject) {
    return subject == analysis::noSubject ? std::string() : SafeText(lane_->Names().NameOf(subject));
  };
  Row row = NewRow("finding");
  row.task = nameOf(finding.task);
  row.count = finding.occurrences.size();
  row.finding = ++findings_;
  row.cause = NameOf(finding.cause.Root().kind);
  row.causeTask = nameOf(finding.cause.Root().task);
  row.sign = NameOf(finding.sign);
  row.issue = nameOf(finding.issue);
  row.verdict = verdict;
  row.at = finding.job.activation;
  row.since = finding.since;
  row.normal = finding.cause.normal;
  row.actual = finding.cause.actual;
  row.excess = finding.excess;
  row.confidence = finding.confidence;
  Put(row);
}

void Rows::Finish() { columns_->writer.Finish(); }

Rows::Row Rows::NewRow(std::string_view kind) const {
  Row row;
  row.kind = kind;
  row.lane = laneName_;
  if (lane_->TicksPerSecond() != 0) row.rate = lane_->TicksPerSecond();
  return row;
}

void Rows::Put(const Row& row) {
  Columns& to = *columns_;
  const bool isLane = row.kind == "lane";
  to.schema.Add(schemaVersion);
  to.kind.Add(row.kind);
  to.recording.Add(recording_.identity);
  AddText(to.machine, SafeText(recording_.machine));
  AddText(to.startedAt, SafeText(recording_.startedAt));
  AddText(to.lane, row.lane);
  to.rate.Add(row.rate);
  AddText(to.task, row.task);
  to.count.Add(row.count);
  AddText(to.status, row.status);
  AddText(to.message, row.message);
  AddText(to.source, isLane ? SafeText(recording_.source) : "");
  AddText(to.target, isLane ? SafeText(recording_.target) : "");
  AddText(to.tool, isLane ? SafeText(recording_.tool) : "");
  to.start.Add(row.start);
  to.stop.Add(row.stop);
  to.covered.Add(row.covered);
  to.unknown.Add(row.unknown);
  to.switches.Add(row.switches);
  to.busy.Add(row.busy);
  AddText(to.statistic, row.statistic);
  to.priority.Add(row.priority);
  to.share.Add(row.share);
  const auto& summary = row.summary;
  to.min.Add(summary ? Number(summary->min) : Number());
  to.p50.Add(summary ? Number(summary->p50) : Number());
  to.p95.Add(summary ? Number(summary->p95) : Number());
  to.p99.Add(summary ? Number(summary->p99) : Number());
  to.p999.Add(summary ? Number(summary->p999) : Number());
  to.max.Add(summary ? Number(summary->max) : Number());
  to.mean.Add(summary ? std::optional(summary->mean) : std::nullopt);
  to.stddev.Add(summary ? std::optional(summary->stddev) : std::nullopt);
  to.maxAt.Add(summary ? Number(summary->maxAt) : Number());
  to.finding.Add(row.finding);
  AddText(to.cause, row.cause);
  AddText(to.causeTask, row.causeTask);
  AddText(to.sign, row.sign);
  AddText(to.issue, row.issue);
  AddText(to.verdict, row.verdict);
  to.at.Add(row.at);
  to.since.Add(row.since);
  to.normal.Add(row.normal);
  to.actual.Add(row.actual);
  to.excess.Add(row.excess);
  to.confidence.Add(row.confidence);
  to.writer.EndRow();
}

}  // namespace fleet
