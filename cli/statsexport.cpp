// Statistics for programs: CSV with a row for each task, and JSON. Both have every statistic.
#include <array>
#include <utility>

#include "jsonwriter.h"
#include "statsformat.h"
#include "summaryformat.h"
#include "text.h"

namespace cli {
namespace {

using analysis::Quantity;
using analysis::TaskIndex;
using analysis::TaskStatistics;

constexpr Quantity quantities[analysis::quantityCount] = {Quantity::execution, Quantity::response,
                                                          Quantity::startLatency,
                                                          Quantity::activationInterval, Quantity::run};

// What is counted of a task: the JSON key, the CSV column, the number.
struct Counter {
  const char* key;
  const char* column;
  std::uint64_t TaskStatistics::*count;
};
constexpr Counter counters[] = {
    {"jobs", "jobs", &TaskStatistics::jobs},
    {"cut", "cut", &TaskStatistics::cut},
    {"askedEarlier", "asked_earlier", &TaskStatistics::askedEarlier},
    {"dropped", "dropped", &TaskStatistics::dropped},
    {"preemptions", "preemptions", &TaskStatistics::preemptions},
    {"slices", "slices", &TaskStatistics::slices},
    {"waits", "waits", &TaskStatistics::waits},
    {"testpoints", "testpoints", &TaskStatistics::testpoints},
    {"issues", "issues", &TaskStatistics::issues},
};

class StatsCsv : public StatsFormat {
 public:
  explicit StatsCsv(fmt::memory_buffer& out) : csv_(out) {
    for (const char* column : {"lane", "ticks_per_second", "start_ticks", "stop_ticks", "covered_ticks",
                               "unknown_ticks", "switches", "busy", "task", "priority", "load_ticks", "load"})
      csv_.Text(column);
    for (const Counter& counter : counters) csv_.Text(counter.column);
    for (const Quantity quantity : quantities) AddSummaryColumns(csv_, NameOf(quantity));
    csv_.EndRow();
  }

  void Add(const LaneStatistics& lane) override {
    for (const TaskIndex task : lane.tasks) AddTask(lane, task);
  }

 private:
  void AddTask(const LaneStatistics& lane, TaskIndex index) {
    const analysis::Lane& of = lane.source.lane;
    const TaskStatistics& task = lane.statistics.Tasks()[index];
    csv_.Text(lane.source.source.name);
    of.TicksPerSecond() == 0 ? csv_.Nothing() : csv_.Count(of.TicksPerSecond());
    for (const std::uint64_t number : {of.StartTime(), of.StopTime(), of.CoveredTicks(),
                                       lane.statistics.UnknownTicks(), lane.statistics.Switches()})
      csv_.Count(number);
    csv_.Number(lane.statistics.Busy());
    csv_.Text(of.Tasks()[index].name);
    csv_.Count(of.Tasks()[index].priority);
    csv_.Count(task.loadTicks);
    csv_.Number(lane.statistics.LoadOf(index));
    for (const Counter& counter : counters) csv_.Count(task.*counter.count);
    for (const Quantity quantity : quantities) AddSummary(csv_, task.Of(quantity).Summarize());
    csv_.EndRow();
  }

  CsvWriter csv_;
};

class StatsJson : public StatsFormat {
 public:
  explicit StatsJson(fmt::memory_buffer& out) : json_(out) {
    json_.BeginObject();
    json_.Key("schema").Count(1);
    json_.Key("lanes").BeginArray();
  }

  void Add(const LaneStatistics& lane) override {
    json_.BeginRow();
    AddLaneKeys(json_, lane.source);
    json_.Key("unknownTicks").Ticks(lane.statistics.UnknownTicks());
    json_.Key("switches").Count(lane.statistics.Switches());
    json_.Key("switchesPerSecond").Number(lane.SwitchesPerSecond());
    json_.Key("busy").Number(lane.statistics.Busy());
    json_.Key("tasks").BeginArray();
    for (const TaskIndex task : lane.tasks) AddTask(lane, task);
    json_.EndArray();
    json_.EndObject();
  }

  void End() override { json_.EndRows(); }

 private:
  void AddTask(const LaneStatistics& lane, TaskIndex index) {
    const TaskStatistics& task = lane.statistics.Tasks()[index];
    json_.BeginRow();
    json_.Key("name").Text(lane.source.lane.Tasks()[index].name);
    json_.Key("priority").Count(lane.source.lane.Tasks()[index].priority);
    json_.Key("loadTicks").Ticks(task.loadTicks);
    json_.Key("load").Number(lane.statistics.LoadOf(index));
    for (const Counter& counter : counters) json_.Key(counter.key).Count(task.*counter.count);
    for (const Quantity quantity : quantities) {
      json_.Key(NameOf(quantity));
      AddSummary(json_, task.Of(quantity).Summarize());
    }
    json_.EndObject();
  }

  JsonWriter json_;
};

}  // namespace

std::unique_ptr<StatsFormat> MakeStatsCsv(fmt::memory_buffer& out) { return std::make_unique<StatsCsv>(out); }

std::unique_ptr<StatsFormat> MakeStatsJson(fmt::memory_buffer& out) {
  return std::make_unique<StatsJson>(out);
}

}  // namespace cli
