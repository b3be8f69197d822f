#include "analysedlane.h"

#include "bounds.h"
#include "failure.h"
#include "suggest.h"
#include "text.h"

namespace cli {

AnalysedLane AnalysedLane::Between(std::uint64_t from, std::uint64_t to) const {
  AnalysedLane part = *this;
  part.lane = lane.Between(from, to);
  part.conventions.idle = analysis::FindIdleTask(part.lane, loaded->idleTask);
  return part;
}

std::string AnalysedLane::IdleName() const {
  return conventions.idle == analysis::noTask ? "" : lane.Tasks()[conventions.idle].name;
}

std::string AnalysedLane::LengthText(std::uint64_t ticks) const {
  return time.HasSeconds() ? time.Length(ticks) : std::to_string(ticks);
}

std::string AnalysedLane::TimeText(std::uint64_t ticks) const {
  return time.HasSeconds() ? time.Since(ticks) : std::to_string(ticks);
}

LaneLoader::LaneLoader(const char* command, const AnalysisOptions& options)
    : command_(command),
      from_(CheckedBound("--from", options.from)),
      to_(CheckedBound("--to", options.to)),
      idle_(options.idle) {
  if (!options.switches) return;
  std::string mistake;
  meanings_ = analysis::Meanings::Parse(*options.switches, mistake);
  if (!meanings_) throw UsageError("--switches: " + SafeText(mistake));
}

AnalysedLane LaneLoader::Load(const Lane& source) {
  return Of(source, std::make_shared<const LaneLog>(LoadLane(source)));
}

AnalysedLane LaneLoader::Of(const Lane& source, std::shared_ptr<const LaneLog> loaded) {
  const std::string doing = command_ + " of " + Quoted(source.shownAs);
  if (loaded->merged) {
    throw Failure(doing +
                  ": several loggers were merged into it, and its entries do not say which is whose "
                  "(record without --merge)");
  }
  std::vector<analysis::Gap> gaps;
  for (const Gap& gap : loaded->gaps) gaps.push_back({gap.from, gap.to});
  const Bounds bounds = BoundsIn(loaded->log, from_, to_, command_, doing);
  const analysis::Lane whole({&loaded->log}, std::move(gaps));
  analysis::Lane lane = from_ || to_ ? whole.Between(bounds.from, bounds.to) : whole;
  const analysis::Conventions conventions{MeaningsOf(source, *loaded), IdleTaskOf(lane, *loaded)};
  const TimeFormat time(loaded->log.StartTime(), loaded->log.TicksPerSecond());
  return {source, std::move(loaded), std::move(lane), conventions, time};
}

analysis::Meanings LaneLoader::MeaningsOf(const Lane& source, const LaneLog& loaded) const {
  if (meanings_) return *meanings_;
  if (loaded.switches.empty()) return {};
  std::string mistake;
  if (const auto meanings = analysis::Meanings::Parse(loaded.switches, mistake)) return *meanings;
  PrintWarning("the metadata of " + Quoted(source.shownAs) +
               " does not say what the switches mean: " + SafeText(mistake));
  return {};
}

analysis::TaskIndex LaneLoader::IdleTaskOf(const analysis::Lane& lane, const LaneLog& loaded) {
  if (idle_) {
    const analysis::TaskIndex idle = analysis::FindIdleTask(lane, *idle_);
    idleFound_ |= idle != analysis::noTask;
    if (idle != analysis::noTask) return idle;
    for (const analysis::Task& task : lane.Tasks()) tasksSeen_.push_back(task.name);
  }
  return analysis::FindIdleTask(lane, loaded.idleTask);
}

void LaneLoader::Finish() const {
  if (!idle_ || idleFound_ || tasksSeen_.empty()) return;
  throw Failure("--idle: there is no task " + Quoted(*idle_) + Suggestion(*idle_, tasksSeen_));
}

int ForEachLane(LaneLoader& loader, const std::vector<Lane>& lanes, const std::function<void()>& before,
                const std::function<void(const AnalysedLane&)>& use) {
  int exitCode = exitSuccess;
  for (const Lane& lane : lanes) {
    try {
      use(loader.Load(lane));
    } catch (const Failure& failure) {
      before();
      PrintError(failure.what());
      exitCode = exitFailure;
    }
  }
  return exitCode;
}

}  // namespace cli
