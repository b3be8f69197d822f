#include "topreader.h"

#include <utility>

#include "failure.h"
#include "signals.h"

namespace cli {

TopReader::TopReader(const std::string& target, const std::vector<Logger>& loggers,
                     const analysis::Meanings& meanings, const std::string& idlePattern) {
  for (const Logger logger : loggers) {
    loggers_.push_back({logger.Name(), analysis::Follower(meanings, idlePattern)});
    readers_.emplace_back(target, logger, log_);
  }
}

bool TopReader::ReadAll() {
  lastRoundFailed_ = false;
  for (std::size_t i = 0; i < loggers_.size(); ++i) {
    if (!ReadOne(i)) return false;
  }
  isFirstRound_ = false;
  return true;
}

bool TopReader::ReadOne(std::size_t index) {
  TopLogger& logger = loggers_[index];
  LoggerReader& reader = readers_[index];
  log_ = tasklog::Log();
  reader.GoOnIn(log_);
  const auto outcome = reader.Read([](double) { return StopRequests() == 0; });
  if (!outcome.completed) {
    if (StopRequests() > 0) return false;
    Fail(logger, reader, outcome.status);
    return true;
  }
  logger.note.clear();
  if (!outcome.status) {
    logger.note = "reading the names of tasks and testpoints: " + StatusText(outcome.status) +
                  " (they are named by their ids)";
  }
  ++logger.reads;
  if (outcome.lostRecords) {
    ++logger.losses;
    logger.lastLoss = analysis::Gap{outcome.lastKnownTicks, outcome.firstNewTicks};
  }
  logger.follower.Take(std::exchange(log_, tasklog::Log()));
  return true;
}

void TopReader::Fail(TopLogger& logger, const LoggerReader& reader, tasklog::Status status) {
  if (isFirstRound_) {
    const bool unknown = status.Code() == noSuchVariable;
    throw Failure("reading " + reader.Description(), status,
                  unknown ? "--logger all takes the loggers that the target has" : "");
  }
  lastRoundFailed_ = true;
  logger.note = "the last read failed: " + StatusText(status);
}

}  // namespace cli
