// The loggers of a controller: how they are named on the command line, in files and messages, and started.
#pragma once

#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

namespace cli {

// The code with which the target-access library says that a target has no variable of that name.
inline constexpr std::uint32_t noSuchVariable = 0x50201;

// What an append from a target has done when it reports these fractions; docs/embedding.md, Progress.
inline constexpr double ringSizeKnown = 0.02;
inline constexpr double ringTransferred = 0.75;
inline constexpr double appendCompleted = 1.0;

struct Logger {
  std::int32_t kernel = tasklog::schedulerLogger;

  bool operator==(const Logger&) const = default;
  std::string Name() const;                                  // "scheduler", "kernel1"
  std::string FileName() const;                              // "scheduler.tasklog", "kernel1.tasklog"
  std::string DescribedOn(const std::string& target) const;  // "the logger of kernel 1 of 'demo'"
};

// What --logger asks for.
struct LoggerChoice {
  bool byDefault = false;       // nothing; the scheduler's logger is meant
  bool all = false;             // whatever the target has
  std::vector<Logger> loggers;  // without duplicates, in the order given
};

// Reads the values of --logger; none means the scheduler's. Throws UsageError.
LoggerChoice ParseLoggers(const std::vector<std::string>& values);

// The scheduler's logger and those of kernels 1, 2, ... until the target knows no more. Throws Failure.
std::vector<Logger> FindLoggers(const std::string& target);

// The loggers that are meant; those named beside "all" come behind those found, if they are others. Throws
// Failure.
std::vector<Logger> ChosenLoggers(const std::string& target, const LoggerChoice& choice);

// Warns that without --logger the suffix of `target` selects nothing.
void WarnAboutSuffix(const std::string& target, const LoggerChoice& choice);

// The target name without a kernel suffix: "/@" or "\@" and digits from 1 to 8.
std::string WithoutKernelSuffix(const std::string& target);

// The name under which a logger of `target` is started. Throws Failure when there is none: a suffix selects
// only kernels whose number is written in the digits 1 to 8.
std::string StartTarget(const std::string& target, Logger logger);

// Starts the logger that `target` itself selects. Throws Failure.
void StartLogger(const std::string& target, const std::string& trigger);

// Starts all of them, or none when one has no name to be started by. Throws Failure.
void StartLoggers(const std::string& target, const std::vector<Logger>& loggers, const std::string& trigger);

}  // namespace cli
