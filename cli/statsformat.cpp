// Statistics for people: what a lane is, then three tables of its tasks.
#include "statsformat.h"

#include <algorithm>
#include <utility>

#include "print.h"
#include "summaryformat.h"
#include "text.h"
#include "texttable.h"

namespace cli {
namespace {

using analysis::Quantity;
using analysis::Summary;
using analysis::TaskIndex;

class StatsText : public StatsFormat {
 public:
  StatsText(fmt::memory_buffer& out, bool colors) : out_(out), colors_(colors) {}

  void Add(const LaneStatistics& lane) override {
    Print(out_, "{}{}\n", std::exchange(separator_, "\n"), SafeText(lane.source.source.shownAs));
    PrintLane(lane);
    if (lane.tasks.empty()) return;
    PrintLoads(lane);
    if (lane.tasks == std::vector{lane.source.conventions.idle}) return;  // it has no jobs
    PrintResponses(lane, WorstOf(lane));
    PrintActivations(lane);
  }

 private:
  void PrintLane(const LaneStatistics& lane);
  void PrintLoads(const LaneStatistics& lane);
  void PrintResponses(const LaneStatistics& lane, std::size_t worst);
  void PrintActivations(const LaneStatistics& lane);
  // The place in lane.tasks of the longest response; beyond the end when there is none.
  static std::size_t WorstOf(const LaneStatistics& lane);

  fmt::memory_buffer& out_;
  bool colors_;
  const char* separator_ = "";
};

void StatsText::PrintLane(const LaneStatistics& lane) {
  const AnalysedLane& source = lane.source;
  const analysis::Lane& of = source.lane;
  Print(out_, "  period        {} to {} ticks", of.StartTime(), of.StopTime());
  if (source.time.HasSeconds()) {
    Print(out_, ", {} to {} s", source.TimeText(of.StartTime()), source.TimeText(of.StopTime()));
  }
  Print(out_, "\n");
  Print(out_, "  coverage      {}\n", CoverageText(source));
  if (const analysis::Ticks unknown = lane.statistics.UnknownTicks()) {
    Print(out_, "  unknown       {} {}: nobody is known to run\n", source.LengthText(unknown), source.Unit());
  }
  const auto rate = lane.SwitchesPerSecond();
  Print(out_, "  switches      {}{}\n", lane.statistics.Switches(),
        rate ? fmt::format(", {:.1f} a second", *rate) : "");
  const auto busy = lane.statistics.Busy();
  if (busy) {
    Print(out_, "  busy          {}, idle task {}\n", Percent(*busy), Quoted(source.IdleName()));
  } else {
    Print(out_, "  busy          {}\n",
          source.IdleName().empty() ? "unknown, no idle task is known" : "unknown");
  }
  if (!source.conventions.meanings.AreKnown()) {
    Print(out_, "  jobs          told by priorities alone: what the switches mean is unknown (--switches)\n");
  }
}

void StatsText::PrintLoads(const LaneStatistics& lane) {
  const AnalysedLane& source = lane.source;
  TextTable table({"task", "prio", "load", "jobs", "cut", "preempted", "runs", "mean run", "longest",
                   "testpoints", "issues"});
  for (const TaskIndex task : lane.tasks) {
    const analysis::TaskStatistics& statistics = lane.statistics.Tasks()[task];
    const Summary runs = statistics.Of(Quantity::run).Summarize();
    const auto load = lane.statistics.LoadOf(task);
    table.Add({source.lane.Tasks()[task].name, std::to_string(source.lane.Tasks()[task].priority),
               load ? Percent(*load) : noValue, std::to_string(statistics.jobs),
               std::to_string(statistics.cut), std::to_string(statistics.preemptions),
               std::to_string(runs.count), runs.count ? source.LengthText(NearestTick(runs.mean)) : noValue,
               runs.count ? source.LengthText(runs.max) : noValue, std::to_string(statistics.testpoints),
               std::to_string(statistics.issues)});
  }
  Print(out_, "\n");
  table.Print(out_, false);
}

void StatsText::PrintResponses(const LaneStatistics& lane, std::size_t worst) {
  const AnalysedLane& source = lane.source;
  TextTable table({"", "execution", "", "response", "", "", ""});
  table.Add({fmt::format("times in {}", source.Unit()), "median", "longest", "median", "99 %", "longest",
             "worst job at"});
  for (std::size_t i = 0; i < lane.tasks.size(); ++i) {
    if (lane.tasks[i] == source.conventions.idle) continue;
    const analysis::TaskStatistics& statistics = lane.statistics.Tasks()[lane.tasks[i]];
    std::vector<std::string> cells(7, noValue);
    cells[0] = source.lane.Tasks()[lane.tasks[i]].name;
    if (statistics.jobs > 0) {
      const Summary execution = statistics.Of(Quantity::execution).Summarize();
      const Summary response = statistics.Of(Quantity::response).Summarize();
      cells[1] = source.LengthText(execution.p50);
      cells[2] = source.LengthText(execution.max);
      cells[3] = source.LengthText(response.p50);
      cells[4] = source.LengthText(response.p99);
      cells[5] = source.LengthText(response.max);
      cells[6] = source.TimeText(response.maxAt);
    }
    table.Add(std::move(cells), i == worst);
  }
  Print(out_, "\n");
  table.Print(out_, colors_);
}

void StatsText::PrintActivations(const LaneStatistics& lane) {
  const AnalysedLane& source = lane.source;
  TextTable table({"", "start latency", "", "interval", "", "", "", ""});
  table.Add({fmt::format("times in {}", source.Unit()), "median", "longest", "median", "shortest", "longest",
             "jitter", "std. dev."});
  for (const TaskIndex task : lane.tasks) {
    if (task == source.conventions.idle) continue;
    const Summary start = lane.statistics.Tasks()[task].Of(Quantity::startLatency).Summarize();
    const Summary interval = lane.statistics.Tasks()[task].Of(Quantity::activationInterval).Summarize();
    std::vector<std::string> cells(8, noValue);
    cells[0] = source.lane.Tasks()[task].name;
    if (start.count != 0) {
      cells[1] = source.LengthText(start.p50);
      cells[2] = source.LengthText(start.max);
    }
    if (interval.count != 0) {
      cells[3] = source.LengthText(interval.p50);
      cells[4] = source.LengthText(interval.min);
      cells[5] = source.LengthText(interval.max);
      cells[6] = source.LengthText(interval.max - interval.min);
      cells[7] = source.LengthText(NearestTick(interval.stddev));
    }
    table.Add(std::move(cells));
  }
  Print(out_, "\n");
  table.Print(out_, false);
}

std::size_t StatsText::WorstOf(const LaneStatistics& lane) {
  std::size_t worst = lane.tasks.size();
  std::uint64_t longest = 0;
  for (std::size_t i = 0; i < lane.tasks.size(); ++i) {
    const analysis::Values& responses = lane.statistics.Tasks()[lane.tasks[i]].Of(Quantity::response);
    if (responses.Count() == 0 || responses.Max() <= longest) continue;
    longest = responses.Max();
    worst = i;
  }
  return worst;
}

}  // namespace

void OrderTasks(std::vector<TaskIndex>& tasks, std::string_view key, const analysis::Lane& lane,
                const analysis::Statistics& statistics) {
  if (key == "name") {
    const auto name = [&](TaskIndex task) { return std::string_view(lane.Tasks()[task].name); };
    std::stable_sort(tasks.begin(), tasks.end(), [&](TaskIndex a, TaskIndex b) { return name(a) < name(b); });
    return;
  }
  const auto number = [&](TaskIndex task) -> std::uint64_t {
    const analysis::TaskStatistics& of = statistics.Tasks()[task];
    if (key == "load") return of.loadTicks;
    if (key == "response") return of.Of(Quantity::response).Max();
    return lane.Tasks()[task].priority;
  };
  std::stable_sort(tasks.begin(), tasks.end(),
                   [&](TaskIndex a, TaskIndex b) { return number(a) > number(b); });
}

std::optional<double> LaneStatistics::SwitchesPerSecond() const {
  const double ticks = static_cast<double>(source.lane.CoveredTicks());
  const double rate = static_cast<double>(source.lane.TicksPerSecond());
  if (ticks == 0 || rate == 0) return std::nullopt;
  return static_cast<double>(statistics.Switches()) * rate / ticks;
}

std::unique_ptr<StatsFormat> MakeStatsText(fmt::memory_buffer& out, bool colors) {
  return std::make_unique<StatsText>(out, colors);
}

}  // namespace cli
