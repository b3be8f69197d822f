// What commands that analyse have in common: their options, and lanes as analysis/ takes them.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "analysis/lane.h"
#include "analysis/meanings.h"
#include "args.h"
#include "recording.h"
#include "timeformat.h"

namespace cli {

class OptionList;

// As typed.
struct AnalysisOptions {
  std::vector<std::string> logs;
  std::optional<std::string> from;
  std::optional<std::string> to;
  std::optional<std::string> idle;
  std::optional<std::string> switches;
};

// --from, --to, --idle and --switches; with `withLogs` also LOG...
void DeclareAnalysisOptions(OptionList& list, AnalysisOptions& options, bool withLogs = true);
// --idle and --switches alone.
void DeclareConventions(OptionList& list, AnalysisOptions& options);

// A lane with all that is needed to walk it.
struct AnalysedLane {
  Lane source;
  std::shared_ptr<const LaneLog> loaded;  // `lane` borrows its log
  analysis::Lane lane;
  analysis::Conventions conventions;
  TimeFormat time;

  // The part that --from and --to select, both included; without --idle.
  AnalysedLane Between(std::uint64_t from, std::uint64_t to) const;
  std::string IdleName() const;  // empty: there is no idle task
  // For people: seconds as TimeFormat has them, ticks where the tick rate is unknown.
  std::string LengthText(std::uint64_t ticks) const;
  std::string TimeText(std::uint64_t ticks) const;  // from the start of the log
  const char* Unit() const { return time.HasSeconds() ? "s" : "ticks"; }
};

// Loads lanes one after the other, so that one log at a time is in memory.
class LaneLoader {
 public:
  // Throws UsageError. `command` begins messages about its options.
  LaneLoader(const char* command, const AnalysisOptions& options);

  // Throws Failure: what cannot be read, and a file of several loggers.
  AnalysedLane Load(const Lane& source);
  // The same of a lane that is loaded.
  AnalysedLane Of(const Lane& source, std::shared_ptr<const LaneLog> loaded);
  // After the last lane. Throws Failure when no lane has the task that --idle names.
  void Finish() const;

 private:
  analysis::Meanings MeaningsOf(const Lane& source, const LaneLog& loaded) const;
  analysis::TaskIndex IdleTaskOf(const analysis::Lane& lane, const LaneLog& loaded);

  std::string command_;
  std::optional<TimePoint> from_;
  std::optional<TimePoint> to_;
  std::optional<std::string> idle_;
  std::optional<analysis::Meanings> meanings_;
  bool idleFound_ = false;
  std::vector<std::string> tasksSeen_;  // while the task of --idle was not
};

// Calls `use` with each lane in turn. One that cannot be read is one line on stderr, and keeps the others
// from nothing; `before` is called ahead of that line. Returns the exit code.
int ForEachLane(LaneLoader& loader, const std::vector<Lane>& lanes, const std::function<void()>& before,
                const std::function<void(const AnalysedLane&)>& use);

}  // namespace cli
