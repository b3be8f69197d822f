// Time, loggers and memory of a controller; its variables are in variables.cpp.
#include "controller.h"

#include <fmt/format.h>

#include <algorithm>

#include "status.h"
#include "target/access.h"

namespace sim {
namespace {

constexpr uint64_t rememberEveryNs = 10 * nsPerSecond;

const Task* FindTask(const CoreSpec& spec, const std::string& name) {
  const auto found = std::find_if(spec.tasks.begin(), spec.tasks.end(),
                                  [&name](const Task& task) { return task.name == name; });
  return found == spec.tasks.end() ? nullptr : &*found;
}

void RequireTrigger(const CoreSpec& spec, const std::string& name) {
  if (name.empty() || FindTask(spec, name)) return;
  std::string known;
  for (const Task& task : spec.tasks) known += (known.empty() ? "" : ", ") + task.name;
  throw Failure{unknownTrigger,
                fmt::format("The logger has no trigger task '{}', expected one of: {}", name, known)};
}

}  // namespace

Controller::Controller(Scenario scenario, StateStore store, std::function<uint64_t()> wallNs)
    : scenario_(std::move(scenario)),
      store_(std::move(store)),
      wallNs_(std::move(wallNs)),
      faults_(scenario_.faults) {
  for (const CoreSpec& spec : scenario_.cores) units_.emplace_back(spec, scenario_);
}

double Controller::CallProcedure(std::string_view name) {
  const std::lock_guard lock(mutex_);
  std::string_view member;
  Unit* unit = FindLogger(name, member);
  if (!unit || member != "Start()") {
    throw Failure{noSuchProcedure, fmt::format("The controller has no procedure '{}'", name)};
  }
  const StateLock held = store_.Lock();  // what another process starts meanwhile must not be lost
  TakeContact();
  RequireTrigger(unit->spec, unit->trigger);
  StartLogger(*unit, nowNs_, unit->trigger);
  Remember(true);
  return 1;
}

void Controller::ReadMemory(int64_t address, uint32_t* words, uint32_t count) {
  const std::lock_guard lock(mutex_);
  for (Unit& unit : units_) {
    const size_t size = unit.logger.Words().size();
    if (address < unit.spec.bufferAddress) continue;
    const int64_t offset = address - unit.spec.bufferAddress;
    if (offset % 4 != 0 || static_cast<uint64_t>(offset) / 4 + count > size) continue;
    if (scenario_.stepped) nowNs_ += scenario_.stepNs;
    MeetNow();
    if (unit.logger.Recording()) unit.core.AdvanceBefore(nowNs_);
    std::copy_n(unit.logger.Words().data() + offset / 4, count, words);
    return;
  }
  throw Failure{badAddress,
                fmt::format("{} words at address 0x{:X} do not lie in a logger buffer", count, address)};
}

std::vector<uint32_t> Controller::TaskIds(Kernel kernel) const {
  std::vector<uint32_t> ids;
  for (const Unit& unit : units_) {
    if (!IsSeenBy(kernel, unit)) continue;
    for (const Task& task : unit.spec.tasks) ids.push_back(task.id);
  }
  if (kernel && ids.empty())
    throw Failure{unknownKernel, fmt::format("The controller has no kernel {}", *kernel)};
  return ids;
}

const Task& Controller::TaskById(uint32_t id) const {
  for (const Unit& unit : units_) {
    for (const Task& task : unit.spec.tasks) {
      if (task.id == id) return task;
    }
  }
  throw Failure{unknownTask, fmt::format("The controller has no task 0x{:08X}", id)};
}

// ---- Time ----

void Controller::MeetNow() {
  if (scenario_.stepped) return;
  const StateLock lock = store_.Lock();
  TakeContact();
}

// Takes the time of a contact. On the wall clock this is also where another process's doings are noticed.
void Controller::TakeContact() {
  if (scenario_.stepped) return;
  const auto state = store_.Load();  // before the time is taken, so that none in it lies ahead
  const uint64_t wallNs = wallNs_();
  if (state && IsOurs(*state, wallNs)) {
    Adopt(*state, wallNs);
  } else if (!powerOnNs_ || wallNs - contactNs_ > powerOffNs) {
    PowerOn(wallNs);
  }
  contactNs_ = wallNs;
  nowNs_ = std::max(nowNs_, wallNs - *powerOnNs_);
  Remember(false);
}

// Files may be old, damaged, or from before the machine was restarted: nothing in them is taken on trust.
bool Controller::IsOurs(const RunState& state, uint64_t wallNs) const {
  if (state.powerOnNs > state.contactNs || state.contactNs > wallNs) return false;
  if (wallNs - state.contactNs > powerOffNs) return false;
  return std::all_of(state.loggers.begin(), state.loggers.end(), [&](const StartedLogger& logger) {
    const auto knowsTrigger = [&logger](const CoreSpec& spec) {
      return spec.number == logger.number && (logger.trigger.empty() || FindTask(spec, logger.trigger));
    };
    return logger.startNs <= state.contactNs - state.powerOnNs &&
           std::any_of(scenario_.cores.begin(), scenario_.cores.end(), knowsTrigger);
  });
}

void Controller::PowerOn(uint64_t wallNs) {
  powerOnNs_ = wallNs;
  nowNs_ = 0;
  for (Unit& unit : units_) {
    unit.logger.Clear();
    unit.startNs.reset();
    unit.trigger.clear();
  }
}

void Controller::Adopt(const RunState& state, uint64_t wallNs) {
  if (powerOnNs_ != state.powerOnNs) PowerOn(state.powerOnNs);
  const uint64_t nowNs = wallNs - state.powerOnNs;
  for (const StartedLogger& started : state.loggers) {
    const bool longRun = started.trigger.empty() && nowNs - started.startNs > longRunNs;
    for (Unit& unit : units_) {
      if (unit.spec.number != started.number || unit.startNs == started.startNs) continue;
      StartLogger(unit, longRun ? nowNs - takeUpNs : started.startNs, started.trigger);
      unit.startNs = started.startNs;
      unit.trigger = started.trigger;
    }
  }
}

void Controller::Remember(bool always) {
  if (scenario_.stepped || (!always && contactNs_ - rememberedNs_ < rememberEveryNs)) return;
  RunState state{*powerOnNs_, contactNs_, {}};
  for (const Unit& unit : units_) {
    if (unit.startNs) state.loggers.push_back({unit.spec.number, *unit.startNs, unit.startTrigger});
  }
  if (state.loggers.empty()) return;
  store_.Save(state);
  rememberedNs_ = contactNs_;
}

// The tasks of a core are in step with whole seconds of controller time. So only the running second need be
// made up for before a start, and a core whose logger does not record costs nothing.
void Controller::StartLogger(Unit& unit, uint64_t startNs, const std::string& trigger) {
  // No task has an empty name, so an empty trigger finds none.
  const Task* triggerTask = FindTask(unit.spec, trigger);
  const auto triggerId = triggerTask ? std::optional(triggerTask->id) : std::nullopt;
  unit.logger.Stop();
  unit.core.Reset(startNs - startNs % nsPerSecond);
  unit.core.AdvanceBefore(startNs);
  unit.logger.Start(scenario_.Clock().At(startNs), unit.core.RunningTaskId(), triggerId);
  unit.startNs = startNs;
  unit.startTrigger = trigger;
}

}  // namespace sim
