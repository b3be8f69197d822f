// A simulated controller: its processors with their loggers, the memory that holds their buffers, and its
// variables.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "faults.h"
#include "logger.h"
#include "scenario.h"
#include "statestore.h"
#include "taskrunner.h"

namespace sim {

using Value = std::variant<double, std::string>;

// All members may be called from several threads. What goes wrong is thrown as a Failure.
class Controller {
 public:
  // A contact after this long finds the controller switched off and on again.
  static constexpr uint64_t powerOffNs = 300 * nsPerSecond;
  // A logger without a trigger that was not read for longer than the first of these is taken up from the
  // second before now, so that catching up stays short.
  static constexpr uint64_t longRunNs = 900 * nsPerSecond;
  static constexpr uint64_t takeUpNs = 60 * nsPerSecond;

  // `wallNs` tells the time, on a clock that all processes share.
  Controller(Scenario scenario, StateStore store, std::function<uint64_t()> wallNs);

  // Some of what a controller offers depends on how it was reached: with the suffix of a kernel, tasks and
  // testpoints are that kernel's; without one, the scheduler's and those of kernel 0.
  using Kernel = std::optional<uint32_t>;

  Value GetVariable(Kernel kernel, std::string_view name);
  void PutText(std::string_view name, const std::string& text);
  // What the procedure answers.
  double CallProcedure(std::string_view name);

  // Copies `count` words of a logger buffer as it is now. On the stepped clock, time then advances first.
  void ReadMemory(int64_t address, uint32_t* words, uint32_t count);

  std::vector<uint32_t> TaskIds(Kernel kernel) const;
  const Task& TaskById(uint32_t id) const;

  FaultPlan& Faults() { return faults_; }

 private:
  // A processor at work, with its logger.
  struct Processor {
    Processor(const ProcessorSpec& processorSpec, const Scenario& scenario)
        : spec(processorSpec),
          logger(spec.cellCount, scenario.tickBits),
          runner(spec, scenario.seed, scenario.Clock(), logger) {}

    const ProcessorSpec& spec;
    Logger logger;
    TaskRunner runner;
    std::string triggerVariable;      // the next start takes it
    std::optional<uint64_t> startNs;  // of the logger; empty until it is started
    std::string activeTrigger;        // the latest start took it
  };

  static bool IsSeenBy(Kernel kernel, const Processor& processor);
  Processor* FindLogger(std::string_view name, std::string_view& member);
  std::optional<Value> TargetVariable(std::string_view name) const;
  std::optional<Value> WatchpointVariable(Kernel kernel, std::string_view name) const;
  std::optional<Value> LoggerVariable(std::string_view name);

  void NoteContact();
  void NoteContactLocked();  // with the state locked
  bool IsOurs(const RunState& state, uint64_t wallNs) const;
  void PowerOn(uint64_t wallNs);
  void ApplyState(const RunState& state);
  void SaveState(bool always);
  void CatchUp(Processor& processor);
  void Advance(Processor& processor, uint64_t limitNs);
  // Records from `fromNs` on, which lies behind `startNs` where what comes first is not wanted any more.
  void StartLogger(Processor& processor, uint64_t startNs, uint64_t fromNs, const std::string& trigger);
  bool IsPresent(const Processor& processor, const Task& task) const;

  const Scenario scenario_;
  const StateStore store_;
  const std::function<uint64_t()> wallNs_;
  FaultPlan faults_;

  mutable std::mutex mutex_;         // over all below
  std::list<Processor> processors_;  // a list: processors do not move
  uint64_t nowNs_ = 0;               // since power-on
  std::optional<uint64_t> powerOnNs_;
  uint64_t contactNs_ = 0;
  uint64_t savedNs_ = 0;
};

}  // namespace sim
