#include "comparison.h"

#include <algorithm>
#include <map>
#include <utility>

namespace analysis {
namespace {

using Side = std::vector<LaneResult>;

// One task of one lane, wherever it stands: a place is a result and the task's number there.
struct Places {
  std::vector<std::pair<const LaneResult*, TaskIndex>> before;
  std::vector<std::pair<const LaneResult*, TaskIndex>> after;
};

using Key = std::pair<std::string, std::string>;  // lane and task

// All tasks of both sides, in the order in which they come.
class Tasks {
 public:
  void Add(const Side& side, std::vector<std::pair<const LaneResult*, TaskIndex>> Places::*member) {
    for (const LaneResult& result : side) {
      for (TaskIndex task = 0; task < result.lane->Tasks().size(); ++task) {
        const TaskStatistics& statistics = result.statistics->Tasks()[task];
        if (statistics.loadTicks == 0 && statistics.jobs + statistics.cut == 0) continue;
        const Key key{result.name, result.lane->Tasks()[task].name};
        const auto [place, isNew] = index_.emplace(key, all.size());
        if (isNew) all.push_back({key, {}});
        (all[place->second].second.*member).push_back({&result, task});
      }
    }
  }

  std::vector<std::pair<Key, Places>> all;

 private:
  std::map<Key, std::size_t> index_;
};

std::vector<const Values*> SeriesOf(const std::vector<std::pair<const LaneResult*, TaskIndex>>& places,
                                    Quantity quantity) {
  std::vector<const Values*> series;
  for (const auto& [result, task] : places)
    if (const Values& values = result->statistics->Tasks()[task].Of(quantity); values.Count() > 0)
      series.push_back(&values);
  return series;
}

Summary SummaryOf(const std::vector<const Values*>& series) {
  if (series.size() == 1) return series[0]->Summarize();
  Values joined;
  const Values* smallest = series[0];
  const Values* largest = series[0];
  for (const Values* values : series) {
    values->ForEach([&](std::uint64_t value) { joined.Add(value, 0); });
    if (values->Min() < smallest->Min()) smallest = values;
    if (values->Max() > largest->Max()) largest = values;
  }
  Summary summary = joined.Summarize();
  summary.minAt = smallest->MinAt();
  summary.maxAt = largest->MaxAt();
  return summary;
}

// Of all recordings of one side together.
std::optional<double> LoadOf(const std::vector<std::pair<const LaneResult*, TaskIndex>>& places) {
  double load = 0;
  double known = 0;
  const LaneResult* last = nullptr;
  for (const auto& [result, task] : places) {
    load += static_cast<double>(result->statistics->Tasks()[task].loadTicks);
    if (std::exchange(last, result) == result) continue;
    known += static_cast<double>(result->statistics->KnownTicks());
  }
  return known > 0 ? std::optional<double>(load / known) : std::nullopt;
}

bool CompletesJobs(const std::vector<std::pair<const LaneResult*, TaskIndex>>& places) {
  return !SeriesOf(places, Quantity::response).empty();
}

bool HasLane(const Side& side, const std::string& name) {
  return std::any_of(side.begin(), side.end(), [&](const LaneResult& result) { return result.name == name; });
}

void AddMissing(std::vector<Missing>& missing, const std::string& lane, const std::string& task) {
  const bool isKnown = std::any_of(missing.begin(), missing.end(),
                                   [&](const Missing& one) { return one.lane == lane && one.task == task; });
  if (!isKnown) missing.push_back({lane, task});
}

void AddMissingLanes(std::vector<Missing>& missing, const Side& side, const Side& other) {
  for (const LaneResult& result : side)
    if (!HasLane(other, result.name)) AddMissing(missing, result.name, "");
}

}  // namespace

Comparison Compare(const Side& before, const Side& after) {
  Comparison comparison;
  AddMissingLanes(comparison.appeared, after, before);
  AddMissingLanes(comparison.vanished, before, after);
  Tasks tasks;
  tasks.Add(before, &Places::before);
  tasks.Add(after, &Places::after);
  for (const auto& [key, places] : tasks.all) {
    const auto& [lane, task] = key;
    if (!HasLane(before, lane) || !HasLane(after, lane)) continue;
    if (places.before.empty()) comparison.appeared.push_back({lane, task});
    if (places.after.empty()) comparison.vanished.push_back({lane, task});
    if (places.before.empty() || places.after.empty()) continue;
    if (CompletesJobs(places.before) && !CompletesJobs(places.after))
      comparison.stalled.push_back({lane, task});
    comparison.loads.push_back({lane, task, LoadOf(places.before), LoadOf(places.after)});
    for (std::size_t i = 0; i < quantityCount; ++i) {
      const auto quantity = static_cast<Quantity>(i);
      const auto seriesBefore = SeriesOf(places.before, quantity);
      const auto seriesAfter = SeriesOf(places.after, quantity);
      if (seriesBefore.empty() || seriesAfter.empty()) continue;
      comparison.changes.push_back({lane, task, quantity, SummaryOf(seriesBefore), SummaryOf(seriesAfter),
                                    CompareRanks(seriesBefore, seriesAfter)});
    }
  }
  std::stable_sort(comparison.changes.begin(), comparison.changes.end(),
                   [](const Change& a, const Change& b) {
                     if (a.test.IsNoise() != b.test.IsNoise()) return b.test.IsNoise();
                     return a.test.Strength() > b.test.Strength();
                   });
  return comparison;
}

}  // namespace analysis
