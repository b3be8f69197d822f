#include "lane.h"

#include <fmt/format.h>

#include <numeric>
#include <utility>

#include "analysis/schedule.h"
#include "analysis/statistics.h"
#include "cli/bounds.h"
#include "cli/explainformat.h"
#include "cli/failure.h"
#include "cli/recordingoutput.h"
#include "cli/savedfile.h"
#include "cli/statsformat.h"
#include "cli/text.h"
#include "failures.h"

namespace python {
namespace {

// Begins messages where a command would name itself.
constexpr const char* doing = "analysis";

// What is known of a lane and goes into the file beside it.
cli::Metadata NotesOf(const cli::Lane& source, const cli::LaneLog& loaded, const std::string& fileName,
                      const cli::SavedFile& saved) {
  cli::Metadata notes;
  if (loaded.metadata) notes = *loaded.metadata;
  if (!loaded.merged) {
    cli::RecordedLogger logger{.name = source.name};
    for (const cli::RecordedLogger& known : notes.loggers)
      if (known.name == source.name) logger.reads = known.reads;
    logger.gaps = loaded.gaps;
    notes.loggers = {logger};
  }
  notes.merged = loaded.merged;
  for (cli::RecordedLogger& logger : notes.loggers) {
    logger.ticksPerSecond = saved.ticksPerSecond;
    logger.files = {{fileName, saved.period}};
  }
  return notes;
}

std::shared_ptr<const cli::LaneLog> LoadedFrom(const cli::Lane& source) {
  return std::make_shared<const cli::LaneLog>(cli::LoadLane(source));
}

}  // namespace

Lane::Lane(const cli::Lane& source, const AnalysisOptions& options)
    : Lane(source, FailingAs("FileError", [&] { return LoadedFrom(source); }), options) {}

Lane::Lane(cli::Lane source, std::shared_ptr<const cli::LaneLog> loaded, AnalysisOptions options)
    : source_(std::move(source)), loaded_(std::move(loaded)), options_(std::move(options)) {
  Analyse();
}

void Lane::Analyse() {
  cli::LaneLoader loader(doing, options_);
  if (!loaded_->merged || options_.from || options_.to) {
    analysed_.emplace(loader.Of(source_, loaded_));
    loader.Finish();
  } else {
    whole_.emplace(std::vector<const tasklog::Log*>{&loaded_->log});
  }
}

Lane Lane::Between(const std::optional<std::string>& from, const std::optional<std::string>& to) const {
  cli::CheckedBound("begin", from);
  cli::CheckedBound("end", to);
  AnalysisOptions options = options_;
  if (from) options.from = from;
  if (to) options.to = to;
  return Lane(source_, loaded_, options);
}

const cli::AnalysedLane& Lane::Analysed() const {
  if (!analysed_) cli::LaneLoader(doing, options_).Of(source_, loaded_);  // which says why not
  return *analysed_;
}

std::string Lane::StatsJson() const {
  const cli::AnalysedLane& lane = Analysed();
  const auto statistics = analysis::Statistics::Of(lane.lane, lane.conventions);
  std::vector<analysis::TaskIndex> tasks(lane.lane.Tasks().size());
  std::iota(tasks.begin(), tasks.end(), 0);
  fmt::memory_buffer out;
  const auto format = cli::MakeStatsJson(out);
  format->Add({lane, statistics, std::move(tasks)});
  format->End();
  return fmt::to_string(out);
}

std::string Lane::ExplainJson(const cli::ExplainOptions& options, std::size_t limit, const Lane* good) const {
  const cli::AnalysedLane& lane = Analysed();
  cli::ExplainQuestion asked(options);
  const auto question = asked.For(lane);
  asked.Finish();
  if (good && good->Analysed().lane.TicksPerSecond() != lane.lane.TicksPerSecond())
    throw cli::Failure("against: " + cli::Quoted(source_.shownAs) +
                       " has another tick rate than the good log");
  const analysis::Schedule schedule(lane.lane, lane.conventions);
  std::optional<analysis::Schedule> normal;
  if (good) normal.emplace(good->Analysed().lane, good->Analysed().conventions);
  const auto explanation = analysis::Explain(schedule, *question, normal ? &*normal : nullptr);
  fmt::memory_buffer out;
  const auto format = cli::MakeExplainJson(out, limit);
  format->Add({lane, explanation, *question});
  format->End();
  return fmt::to_string(out);
}

std::string Lane::Save(const std::string& path) const {
  auto output = cli::RecordingOutput::File(path);
  const cli::SavedFile saved = cli::SaveChecked(loaded_->log, output.SavePath(0), path);
  const std::string fileName = path.substr(path.rfind('/') + 1);
  output.Commit(cli::ToJson(NotesOf(source_, *loaded_, fileName, saved)),
                cli::RecordingOutput::MetadataComes::last);
  return saved.notCarried;
}

}  // namespace python
