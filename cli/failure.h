// How a command ends early: exceptions that carry the one line to print, and the exit codes.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <tasklog/tasklog.hpp>
#include <utility>
#include <vector>

namespace cli {

inline constexpr int exitSuccess = 0;
inline constexpr int exitFailure = 1;
inline constexpr int exitUsage = 2;

// The command line is wrong: exit 2.
class UsageError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

// What was asked for did not work: exit 1.
class Failure : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
  // "<doing>: <text of the status> (<hint>)"
  Failure(std::string_view doing, tasklog::Status status, std::string_view hint = {});
  // "<doing>: <text of errno>"
  static Failure System(std::string_view doing, int errorNumber);

  tasklog::Status Status() const { return status_; }  // success where it was not a status that failed

 private:
  tasklog::Status status_;
};

// The reader of our output has gone: nothing is left to do and nobody is left to tell.
class ClosedPipe {};

// The text of a status, safe to print, never empty; with its number unless it is one of the library's own.
std::string StatusText(tasklog::Status status);

// Prints "tasklog: <line>" to stderr.
void PrintError(std::string_view line);

// Prints "tasklog: warning: <line>" to stderr, unless somebody collects warnings.
void PrintWarning(std::string_view line);

// While it lives, it keeps the warnings of its thread, for programs whose stderr is not ours. One at a time.
class WarningCollector {
 public:
  WarningCollector();
  ~WarningCollector();
  WarningCollector(const WarningCollector&) = delete;
  WarningCollector& operator=(const WarningCollector&) = delete;

  std::vector<std::string> Take() { return std::move(lines_); }

 private:
  friend void PrintWarning(std::string_view line);
  std::vector<std::string> lines_;
};

}  // namespace cli
