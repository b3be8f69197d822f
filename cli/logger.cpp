#include "logger.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include "args.h"
#include "failure.h"
#include "suggest.h"
#include "text.h"

namespace cli {
namespace {

// A target that answers for every number must not keep us looking for ever.
constexpr std::int32_t mostKernels = 255;

Logger ParseLogger(const std::string& value) {
  if (value == "scheduler") return {};
  const auto number = ParseNumber(value);
  if (!number || *number > std::numeric_limits<std::int32_t>::max()) {
    throw UsageError(fmt::format("--logger: {} is not 'scheduler', 'all' or the number of a kernel{}",
                                 Quoted(value), Suggestion(value, {"scheduler", "all"})));
  }
  return {static_cast<std::int32_t>(*number)};
}

// Asks for no more than the size of the logger's buffer: the append is cut off behind that answer.
bool HasLogger(const std::string& target, Logger logger) {
  tasklog::Log scratch;
  const tasklog::Status status = scratch.AppendFromTarget(
      target, logger.kernel, [](double fraction) { return fraction < ringSizeKnown; });
  if (status || status.Code() == TLErrCanceled) return true;
  if (status.Code() == noSuchVariable) return false;
  throw Failure("looking for " + logger.DescribedOn(target), status);
}

}  // namespace

std::string Logger::Name() const {
  return kernel == tasklog::schedulerLogger ? "scheduler" : fmt::format("kernel{}", kernel);
}

std::string Logger::FileName() const { return Name() + ".tasklog"; }

std::string Logger::DescribedOn(const std::string& target) const {
  const std::string base = Quoted(WithoutKernelSuffix(target));
  if (kernel == tasklog::schedulerLogger) return "the scheduler's logger of " + base;
  return fmt::format("the logger of kernel {} of {}", kernel, base);
}

LoggerChoice ParseLoggers(const std::vector<std::string>& values) {
  LoggerChoice choice;
  for (const std::string& value : values) {
    if (value == "all") {
      choice.all = true;
      continue;
    }
    const Logger logger = ParseLogger(value);
    const bool known =
        std::find(choice.loggers.begin(), choice.loggers.end(), logger) != choice.loggers.end();
    if (!known) choice.loggers.push_back(logger);
  }
  choice.byDefault = values.empty();
  if (choice.byDefault) choice.loggers.push_back({});
  return choice;
}

std::vector<Logger> FindLoggers(const std::string& target) {
  std::vector<Logger> loggers;
  if (HasLogger(target, {})) loggers.push_back({});
  for (std::int32_t kernel = 1; HasLogger(target, {kernel}); ++kernel) {
    if (kernel > mostKernels) {
      throw Failure(fmt::format("looking for the loggers of {}: it answers for more than {} kernels",
                                Quoted(target), mostKernels));
    }
    loggers.push_back({kernel});
  }
  if (loggers.empty()) throw Failure("looking for the loggers of " + Quoted(target) + ": it has none");
  return loggers;
}

std::vector<Logger> ChosenLoggers(const std::string& target, const LoggerChoice& choice) {
  if (!choice.all) return choice.loggers;
  std::vector<Logger> loggers = FindLoggers(target);
  for (const Logger logger : choice.loggers) {
    if (std::find(loggers.begin(), loggers.end(), logger) == loggers.end()) loggers.push_back(logger);
  }
  return loggers;
}

void WarnAboutSuffix(const std::string& target, const LoggerChoice& choice) {
  if (!choice.byDefault || WithoutKernelSuffix(target) == target) return;
  PrintWarning("the kernel behind " + Quoted(target) +
               " is not looked at, this reads the scheduler's logger (--logger selects a kernel's)");
}

std::string WithoutKernelSuffix(const std::string& target) {
  const std::size_t last = target.find_last_not_of("12345678");
  if (last == std::string::npos || last == 0 || target[last] != '@') return target;
  const char before = target[last - 1];
  return before == '/' || before == '\\' ? target.substr(0, last - 1) : target;
}

std::string StartTarget(const std::string& target, Logger logger) {
  const std::string base = WithoutKernelSuffix(target);
  if (logger.kernel <= 0) return base;
  const std::string number = std::to_string(logger.kernel);
  if (number.find_first_of("09") != std::string::npos) {
    throw Failure("starting " + logger.DescribedOn(target) +
                  ": only kernels whose number is written in the digits 1 to 8 can be started by number");
  }
  return base + "/@" + number;
}

void StartLogger(const std::string& target, const std::string& trigger) {
  const tasklog::Status status = tasklog::StartLog(target, trigger);
  if (status) return;
  const std::string with = trigger.empty() ? "" : " with trigger task " + Quoted(trigger);
  const bool refused = status.Code() == TLErrLoggerNotStarted;
  throw Failure("starting the logger of " + Quoted(target) + with, status,
                refused ? "the controller answered that it did not start" : "");
}

void StartLoggers(const std::string& target, const std::vector<Logger>& loggers, const std::string& trigger) {
  std::vector<std::string> names;
  for (const Logger logger : loggers) names.push_back(StartTarget(target, logger));
  for (const std::string& name : names) StartLogger(name, trigger);
}

}  // namespace cli
