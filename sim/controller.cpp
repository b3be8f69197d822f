// Time, loggers and memory of a controller; its variables are in variables.cpp.
#include "controller.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

#include "nearest.h"
#include "status.h"
#include "target/access.h"

namespace sim {
namespace {

constexpr size_t mostNamesShown = 20;
constexpr uint64_t saveEveryNs = 10 * nsPerSecond;

const Task* FindTask(const ProcessorSpec& spec, const std::string& name) {
  const auto found = std::find_if(spec.tasks.begin(), spec.tasks.end(),
                                  [&name](const Task& task) { return task.name == name; });
  return found == spec.tasks.end() ? nullptr : &*found;
}

void RequireTrigger(const ProcessorSpec& spec, const std::string& name) {
  if (name.empty() || FindTask(spec, name)) return;
  std::vector<std::string> names;
  for (const Task& task : spec.tasks) names.push_back(task.name);
  const size_t shown = std::min(names.size(), mostNamesShown);
  std::string known = fmt::format("{}", fmt::join(names.begin(), names.begin() + shown, ", "));
  if (shown < names.size()) known += ", ..." + Suggestion(name, names);
  throw Failure{unknownTrigger,
                fmt::format("The logger has no trigger task '{}', expected one of: {}", name, known)};
}

}  // namespace

Controller::Controller(Scenario scenario, StateStore store, std::function<uint64_t()> wallNs)
    : scenario_(std::move(scenario)),
      store_(std::move(store)),
      wallNs_(std::move(wallNs)),
      faults_(scenario_.faults) {
  for (const ProcessorSpec& spec : scenario_.processors) processors_.emplace_back(spec, scenario_);
}

double Controller::CallProcedure(std::string_view name) {
  const std::lock_guard lock(mutex_);
  std::string_view member;
  Processor* processor = FindLogger(name, member);
  if (!processor || member != "Start()") {
    throw Failure{noSuchProcedure, fmt::format("The controller has no procedure '{}'", name)};
  }
  const StateLock held = store_.Lock();  // what another process starts meanwhile must not be lost
  NoteContactLocked();
  RequireTrigger(processor->spec, processor->triggerVariable);
  StartLogger(*processor, nowNs_, nowNs_, processor->triggerVariable);
  SaveState(true);
  return 1;
}

void Controller::ReadMemory(int64_t address, uint32_t* words, uint32_t count) {
  const std::lock_guard lock(mutex_);
  for (Processor& processor : processors_) {
    const size_t size = processor.logger.Words().size();
    if (address < processor.spec.bufferAddress) continue;
    const int64_t offset = address - processor.spec.bufferAddress;
    if (offset % 4 != 0 || static_cast<uint64_t>(offset) / 4 + count > size) continue;
    if (scenario_.stepped) nowNs_ += scenario_.stepNs;
    NoteContact();
    if (processor.logger.Recording()) CatchUp(processor);
    std::copy_n(processor.logger.Words().data() + offset / 4, count, words);
    return;
  }
  throw Failure{badAddress,
                fmt::format("{} words at address 0x{:X} do not lie in a logger buffer", count, address)};
}

std::vector<uint32_t> Controller::TaskIds(Kernel kernel) const {
  const std::lock_guard lock(mutex_);
  std::vector<uint32_t> ids;
  for (const Processor& processor : processors_) {
    if (!IsSeenBy(kernel, processor)) continue;
    for (const Task& task : processor.spec.tasks) {
      if (IsPresent(processor, task)) ids.push_back(task.id);
    }
  }
  if (kernel && ids.empty())
    throw Failure{unknownKernel, fmt::format("The controller has no kernel {}", *kernel)};
  return ids;
}

// A task that appears late is there once the logger has run for so long.
bool Controller::IsPresent(const Processor& processor, const Task& task) const {
  return task.appearsNs == 0 || (processor.startNs && nowNs_ >= *processor.startNs + task.appearsNs);
}

const Task& Controller::TaskById(uint32_t id) const {
  const std::lock_guard lock(mutex_);
  for (const Processor& processor : processors_) {
    const auto& tasks = processor.spec.tasks;  // the idle task at least, with identifiers in a row
    const uint32_t index = id - tasks.front().id;
    if (index < tasks.size() && IsPresent(processor, tasks[index])) return tasks[index];
  }
  throw Failure{unknownTask, fmt::format("The controller has no task 0x{:08X}", id)};
}

// ---- Time ----

void Controller::NoteContact() {
  if (scenario_.stepped) return;
  const StateLock lock = store_.Lock();
  NoteContactLocked();
}

// Takes the time of a contact. On the wall clock this is also where another process's doings are noticed.
void Controller::NoteContactLocked() {
  if (scenario_.stepped) return;
  const auto state = store_.Load();  // before the time is taken, so that none in it lies ahead
  const uint64_t wallNs = wallNs_();
  if (state && IsOurs(*state, wallNs)) {
    ApplyState(*state);
  } else if (!powerOnNs_ || wallNs - contactNs_ > powerOffNs) {
    PowerOn(wallNs);
  }
  contactNs_ = wallNs;
  nowNs_ = std::max(nowNs_, wallNs - *powerOnNs_);
  SaveState(false);
}

// Files may be old, damaged, or from before the computer was restarted: nothing in them is taken on trust.
bool Controller::IsOurs(const RunState& state, uint64_t wallNs) const {
  if (state.powerOnNs > state.contactNs || state.contactNs > wallNs) return false;
  if (wallNs - state.contactNs > powerOffNs) return false;
  return std::all_of(state.loggers.begin(), state.loggers.end(), [&](const StartedLogger& logger) {
    const auto knowsTrigger = [&logger](const ProcessorSpec& spec) {
      return spec.number == logger.number && (logger.trigger.empty() || FindTask(spec, logger.trigger));
    };
    return logger.startNs <= state.contactNs - state.powerOnNs &&
           std::any_of(scenario_.processors.begin(), scenario_.processors.end(), knowsTrigger);
  });
}

void Controller::PowerOn(uint64_t wallNs) {
  powerOnNs_ = wallNs;
  nowNs_ = 0;
  for (Processor& processor : processors_) {
    processor.logger.Clear();
    processor.startNs.reset();
    processor.triggerVariable.clear();
  }
}

void Controller::ApplyState(const RunState& state) {
  if (powerOnNs_ != state.powerOnNs) PowerOn(state.powerOnNs);
  for (const StartedLogger& started : state.loggers) {
    for (Processor& processor : processors_) {
      if (processor.spec.number != started.number || processor.startNs == started.startNs) continue;
      StartLogger(processor, started.startNs, started.startNs, started.trigger);
      processor.triggerVariable = started.trigger;
    }
  }
}

void Controller::SaveState(bool always) {
  if (scenario_.stepped || (!always && contactNs_ - savedNs_ < saveEveryNs)) return;
  RunState state{*powerOnNs_, contactNs_, {}};
  for (const Processor& processor : processors_) {
    if (processor.startNs)
      state.loggers.push_back({processor.spec.number, *processor.startNs, processor.activeTrigger});
  }
  if (state.loggers.empty()) return;
  store_.Save(state);
  savedNs_ = contactNs_;
}

// Brings a processor up to now. A logger without a trigger that nobody has read for long is started anew some
// way before now, so that this stays short.
void Controller::CatchUp(Processor& processor) {
  const bool longUnread = nowNs_ - std::min(nowNs_, processor.runner.NowNs()) > longRunNs;
  if (!scenario_.stepped && processor.activeTrigger.empty() && longUnread) {
    StartLogger(processor, *processor.startNs, nowNs_ - takeUpNs, {});
  }
  Advance(processor, nowNs_);
}

// A scenario may ask for more work than anybody would wait for.
void Controller::Advance(Processor& processor, uint64_t limitNs) {
  if (processor.runner.AdvanceBefore(limitNs, scenario_.mostSteps)) return;
  const Task* busiest = processor.runner.BusiestTask();
  const std::string place =
      busiest ? fmt::format("{}:{}", scenario_.source, busiest->line) : scenario_.source;
  const std::string advice =
      busiest
          ? fmt::format("most of them for task '{}'; expected longer periods, run times, slices and waits",
                        busiest->name)
          : "most of them because the tick field wraps; expected 28 bits or a slower timer";
  throw Failure{badScenario,
                fmt::format("{}: too much to do at one read: more than {} steps, {}, or a shorter step",
                            place, scenario_.mostSteps, advice)};
}

// The tasks of a processor are in step with whole seconds of controller time. So only the running second need
// be made up for before a start, and a processor whose logger does not record costs nothing.
void Controller::StartLogger(Processor& processor, uint64_t startNs, uint64_t fromNs,
                             const std::string& trigger) {
  // No task has an empty name, so an empty trigger finds none.
  const Task* triggerTask = FindTask(processor.spec, trigger);
  const auto triggerId = triggerTask ? std::optional(triggerTask->id) : std::nullopt;
  processor.logger.Stop();
  processor.runner.Reset(fromNs - fromNs % nsPerSecond, startNs);
  Advance(processor, fromNs);
  processor.logger.Start(scenario_.Clock().At(fromNs), processor.runner.RunningTaskId(), triggerId);
  processor.startNs = startNs;
  processor.activeTrigger = trigger;
}

}  // namespace sim
