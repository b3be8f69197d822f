#include "loggerreader.h"

namespace cli {
namespace {

const tasklog::EntryFilter everyType{.types = UINT64_MAX};

// Progress is reported once when the buffer has been transferred, then after each record, then at the end.
class RecordCounter {
 public:
  void Report(double fraction) {
    if (fraction >= appendCompleted) {
      completed_ = true;
    } else if (transferred_) {
      ++records_;
    } else {
      transferred_ = fraction >= ringTransferred;
    }
  }
  bool Completed() const { return completed_; }
  std::uint64_t Records() const { return records_; }

 private:
  bool transferred_ = false;
  bool completed_ = false;
  std::uint64_t records_ = 0;
};

std::uint64_t FirstTicksAfter(const tasklog::Log& log, std::uint64_t ticks) {
  for (const auto& entry : log.Entries({.types = UINT64_MAX, .from = ticks})) {
    if (entry.Timestamp() > ticks) return entry.Timestamp();
  }
  return ticks;
}

}  // namespace

LoggerReader::Outcome LoggerReader::Read(const tasklog::Progress& progress) {
  RecordCounter counter;
  const std::uint64_t entriesBefore = log_->EntriesCount(everyType);
  Outcome outcome;
  outcome.lastKnownTicks = entriesBefore > 0 ? log_->StopTime() : lastTicks_;
  outcome.status = log_->AppendFromTarget(target_, logger_.kernel, [&](double fraction) {
    counter.Report(fraction);
    return progress(fraction);
  });
  outcome.completed = counter.Completed();
  if (!outcome.completed) return outcome;
  const std::uint64_t entries = log_->EntriesCount(everyType);
  const bool sharesNone = entriesBefore > 0 ? entries - entriesBefore == counter.Records()
                                            : log_->StartTime() > outcome.lastKnownTicks;
  outcome.lostRecords = sawRecords_ && counter.Records() > 0 && sharesNone;
  if (outcome.lostRecords) outcome.firstNewTicks = FirstTicksAfter(*log_, outcome.lastKnownTicks);
  sawRecords_ = counter.Records() > 0;
  if (entries > 0) lastTicks_ = log_->StopTime();
  return outcome;
}

}  // namespace cli
