// Exact statistics of a lane and its tasks.
#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "meanings.h"
#include "values.h"
#include "visitor.h"

namespace analysis {

// What is measured of a task's jobs and runs, in ticks.
enum class Quantity : std::uint8_t { execution, response, startLatency, activationInterval, run };
inline constexpr std::size_t quantityCount = 5;
std::string_view NameOf(Quantity quantity);  // as in code and JSON: "startLatency"
std::optional<Quantity> QuantityNamed(std::string_view name);

// Calls `use(quantity, ticks)` for what a job counts in.
template <class Use>
void ForEachValue(const Job& job, Use use) {
  if (job.hasInterval) use(Quantity::activationInterval, job.interval);
  if (!job.IsWhole()) return;
  use(Quantity::execution, job.execution);
  use(Quantity::response, job.Response());
  use(Quantity::startLatency, job.StartLatency());
}

struct TaskStatistics {
  Ticks loadTicks = 0;             // all its runs, cut ones too
  std::uint64_t jobs = 0;          // whole ones
  std::uint64_t cut = 0;           // touched by a gap or an end of the period
  std::uint64_t askedEarlier = 0;  // whole jobs whose start latency and response are lower bounds
  std::uint64_t dropped = 0;       // events that turned out to have no effect
  // Of whole jobs.
  std::uint64_t preemptions = 0;
  std::uint64_t slices = 0;
  std::uint64_t waits = 0;
  // Passed or raised while the task ran.
  std::uint64_t testpoints = 0;
  std::uint64_t issues = 0;
  // For each quantity all values; of the largest, when its job was activated or its run began.
  std::array<Values, quantityCount> values;

  const Values& Of(Quantity quantity) const { return values[static_cast<std::size_t>(quantity)]; }
  Values& Of(Quantity quantity) { return values[static_cast<std::size_t>(quantity)]; }
};

// A visitor. Memory: 4 bytes a whole run, 16 a job.
class Statistics : public Visitor {
 public:
  Statistics(const Lane& lane, TaskIndex idle);
  // Those of a lane: a walk that tells nobody else, in half the time.
  static Statistics Of(const Lane& lane, const Conventions& conventions);

  void OnRun(const Run& run) override;
  void OnJob(const Job& job) override;
  void OnDropped(const Job& job) override;
  void OnMark(const Mark& mark) override;

  const std::vector<TaskStatistics>& Tasks() const { return tasks_; }  // by TaskIndex
  std::uint64_t Switches() const { return switches_; }                 // from one task to another
  TaskIndex Idle() const { return idle_; }
  Ticks UnknownTicks() const { return unknownTicks_; }  // covered, but nobody is known to run
  Ticks KnownTicks() const;                             // covered and known
  // Shares of the known time; empty where nothing is known, or without an idle task.
  std::optional<double> LoadOf(TaskIndex task) const;
  std::optional<double> Busy() const;

 private:
  std::vector<TaskStatistics> tasks_;
  TaskIndex idle_;
  Ticks coveredTicks_;
  Ticks unknownTicks_ = 0;
  std::uint64_t switches_ = 0;
};

}  // namespace analysis
