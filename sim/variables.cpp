// The names that a controller answers to.
#include <fmt/format.h>

#include <charconv>

#include "controller.h"
#include "status.h"
#include "target/access.h"

namespace sim {
namespace {

constexpr std::string_view addressSuffix = ".Prop.Address";

// Takes `prefix` off the front of `text`.
bool Skip(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// Takes a decimal number off the front, written as printf writes it: no sign, no leading zeros.
std::optional<uint32_t> TakeNumber(std::string_view& text) {
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const auto length = static_cast<size_t>(end - text.data());
  if (error != std::errc() || (text[0] == '0' && length > 1)) return std::nullopt;
  text.remove_prefix(length);
  return value;
}

std::optional<Value> Wrap(const std::optional<double>& number) {
  return number ? std::optional<Value>(*number) : std::nullopt;
}

}  // namespace

bool Controller::IsSeenBy(Kernel kernel, const Processor& processor) {
  if (kernel) return processor.spec.number >= 0 && static_cast<uint32_t>(processor.spec.number) == *kernel;
  return processor.spec.number <= 0;
}

Value Controller::GetVariable(Kernel kernel, std::string_view name) {
  const std::lock_guard lock(mutex_);
  auto value = TargetVariable(name);
  if (!value) value = WatchpointVariable(kernel, name);
  if (!value) value = LoggerVariable(name);
  if (!value) throw Failure{noSuchVariable, fmt::format("The controller has no variable '{}'", name)};
  return *value;
}

void Controller::PutText(std::string_view name, const std::string& text) {
  const std::lock_guard lock(mutex_);
  std::string_view member;
  if (Processor* processor = FindLogger(name, member); processor && member == "TriggerTask") {
    NoteContact();  // takes over the trigger of another process, which this one then replaces
    processor->triggerVariable = text;  // the start procedure says whether there is such a task
    return;
  }
  if (TargetVariable(name) || WatchpointVariable(std::nullopt, name) || LoggerVariable(name)) {
    throw Failure{readOnly, fmt::format("The variable '{}' cannot be written", name)};
  }
  throw Failure{noSuchVariable, fmt::format("The controller has no variable '{}'", name)};
}

// "Scheduler.Logger.X" and "Kernel.N.Logger.X": the logger, with `member` set to X.
Controller::Processor* Controller::FindLogger(std::string_view name, std::string_view& member) {
  int64_t number = schedulerNumber;
  if (!Skip(name, "Scheduler")) {
    if (!Skip(name, "Kernel.")) return nullptr;
    const auto kernel = TakeNumber(name);
    if (!kernel) return nullptr;
    number = *kernel;
  }
  if (!Skip(name, ".Logger.")) return nullptr;
  member = name;
  for (Processor& processor : processors_) {
    if (processor.spec.number == number) return &processor;
  }
  return nullptr;
}

std::optional<Value> Controller::LoggerVariable(std::string_view name) {
  std::string_view member;
  const Processor* processor = FindLogger(name, member);
  if (!processor) return std::nullopt;
  if (member == "TriggerTask") return processor->triggerVariable;
  if (member == "BufferSize") return static_cast<double>(processor->logger.Words().size() * sizeof(uint32_t));
  if (member == "BufferAddress") return static_cast<double>(processor->spec.bufferAddress);
  return std::nullopt;
}

std::optional<Value> Controller::TargetVariable(std::string_view name) const {
  if (!Skip(name, "Target.")) return std::nullopt;
  if (name == "Mpu.Resolution") return Wrap(scenario_.resolutionNs);
  if (name == "Cpu" && scenario_.cpu) return *scenario_.cpu;
  if (name == "CpuClock") return Wrap(scenario_.cpuClockHz);
  if (name == "BusClock") return Wrap(scenario_.busClockHz);
  return std::nullopt;
}

std::optional<Value> Controller::WatchpointVariable(Kernel kernel, std::string_view name) const {
  if (!Skip(name, "Watchpoint.Entity")) return std::nullopt;
  std::vector<const Testpoint*> testpoints;
  for (const Processor& processor : processors_) {
    if (!IsSeenBy(kernel, processor)) continue;
    for (const Testpoint& point : processor.spec.testpoints) testpoints.push_back(&point);
  }
  if (name == "!Objects") return static_cast<double>(testpoints.size());
  if (Skip(name, "!Object")) {
    const auto index = TakeNumber(name);
    if (!index || !name.empty() || *index >= testpoints.size()) return std::nullopt;
    return testpoints[*index]->name;
  }
  if (!Skip(name, ".") || !name.ends_with(addressSuffix)) return std::nullopt;
  name.remove_suffix(addressSuffix.size());
  for (const Testpoint* point : testpoints) {
    if (name == point->name) return static_cast<double>(point->address);
  }
  return std::nullopt;
}

}  // namespace sim
