// Reads one logger again and again into a log, and notices when it came too late.
#pragma once

#include <optional>
#include <string>
#include <tasklog/tasklog.hpp>

#include "logger.h"

namespace cli {

class LoggerReader {
 public:
  // What one read of the buffer did.
  struct Outcome {
    tasklog::Status status;
    // The log has what the buffer held; with a bad status the names of some tasks or testpoints are missing.
    bool completed = false;
    // Nothing of what the buffer held was known from the read before: the logger has overwritten records
    // that nobody read.
    bool lostRecords = false;
    std::uint64_t lastKnownTicks = 0;  // with lostRecords: where the log ended before
    std::uint64_t firstNewTicks = 0;   // with lostRecords: where it goes on
  };

  // `log` must outlive the reader. Several readers may fill one log; equal entries of two loggers can then
  // hide a loss.
  LoggerReader(std::string target, Logger logger, tasklog::Log& log)
      : target_(std::move(target)), logger_(logger), log_(&log) {}

  // What `progress` returns decides as for tasklog::Log::AppendFromTarget().
  Outcome Read(const tasklog::Progress& progress);

  // From here on reads go into another log, an empty one: the next segment.
  void GoOnIn(tasklog::Log& log) { log_ = &log; }

  const tasklog::Log& Log() const { return *log_; }
  std::string Description() const { return logger_.DescribedOn(target_); }

 private:
  std::string target_;
  Logger logger_;
  tasklog::Log* log_;
  bool sawRecords_ = false;      // the buffer held records when it was last read
  std::uint64_t lastTicks_ = 0;  // of the log, when it was last read
};

}  // namespace cli
