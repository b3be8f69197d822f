// Reads loggers again and again for `tasklog top`, and keeps of each what is shown.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "analysis/follower.h"
#include "loggerreader.h"

namespace cli {

// What is shown of one logger.
struct TopLogger {
  std::string name;  // "scheduler", "kernel1"
  analysis::Follower follower;
  std::uint64_t reads = 0;
  std::uint64_t losses = 0;
  std::optional<analysis::Gap> lastLoss = {};
  std::string note = {};  // what went wrong with the last read; empty: nothing
};

class TopReader {
 public:
  // `meanings` and `idlePattern` as analysis::Follower takes them.
  TopReader(const std::string& target, const std::vector<Logger>& loggers, const analysis::Meanings& meanings,
            const std::string& idlePattern);

  // Reads all loggers once. False when a request to stop came meanwhile. A read that fails is noted, and the
  // next round tries again; the first round throws Failure.
  bool ReadAll();

  const std::deque<TopLogger>& Loggers() const { return loggers_; }
  bool LastRoundFailed() const { return lastRoundFailed_; }

 private:
  bool ReadOne(std::size_t index);
  void Fail(TopLogger& logger, const LoggerReader& reader, tasklog::Status status);

  std::deque<TopLogger> loggers_;
  std::deque<LoggerReader> readers_;
  tasklog::Log log_;  // of the read at hand
  bool isFirstRound_ = true;
  bool lastRoundFailed_ = false;
};

}  // namespace cli
