// tasklog export: logs in the formats of other programs.
#include <cerrno>
#include <system_error>

#include "analysedlane.h"
#include "commandline.h"
#include "exporters/exporter.h"
#include "exportplace.h"
#include "failure.h"
#include "suggest.h"
#include "taskfilter.h"
#include "text.h"

namespace cli {
namespace {

// As typed.
struct Options {
  AnalysisOptions common;
  std::vector<std::string> to;  // a format, and possibly a time
  std::string output;
  std::vector<std::string> tasks;  // shell patterns
};

std::vector<std::string> FormatNames() {
  std::vector<std::string> names;
  for (const exporters::Format& format : exporters::Formats()) names.emplace_back(format.name);
  return names;
}

std::string JoinedNames() {
  std::string text;
  for (const std::string& name : FormatNames()) text += (text.empty() ? "" : ", ") + name;
  return text;
}

// --to names the format, and may be given once more with the last time: no format is named like a time.
const exporters::Format& TakeFormat(Options& options) {
  const exporters::Format* format = nullptr;
  for (const std::string& value : options.to) {
    const exporters::Format* const named = exporters::FindFormat(value);
    if (!named && !ParseTimePoint(value)) {
      throw UsageError("--to: " + Quoted(value) + " is neither a format (" + JoinedNames() +
                       ") nor a time such as 1.5s" + Suggestion(value, FormatNames()));
    }
    if (named ? format != nullptr : options.common.to.has_value())
      throw UsageError(std::string("--to: two ") + (named ? "formats" : "times") + " are given");
    if (named) format = named;
    if (!named) options.common.to = value;
  }
  if (!format) throw UsageError("--to: no format is given; there are " + JoinedNames());
  return *format;
}

// Lane after lane into one export. The first that fails ends it: there is no half of an export.
void ExportLanes(const Options& options, const std::vector<Lane>& lanes, exporters::Exporter& exporter) {
  LaneLoader loader("export", options.common);
  TaskFilter filter(options.tasks);
  for (const Lane& source : lanes) {
    const AnalysedLane lane = loader.Load(source);
    std::vector<bool> tasks;
    if (!options.tasks.empty()) tasks.resize(lane.lane.Tasks().size());
    if (!options.tasks.empty())
      for (const analysis::TaskIndex task : filter.Of(lane.lane)) tasks[task] = true;
    exporter.Add(
        {source.name, lane.loaded->log.StartTime(), lane.lane, lane.conventions, tasks, lanes.size() > 1});
  }
  loader.Finish();
  filter.Finish();
  exporter.End();
}

int Export(Options options) {
  const exporters::Format& format = TakeFormat(options);
  const std::vector<Lane> lanes = FindLanes(options.common.logs);
  ExportPlace place(options.output, format);
  try {
    const auto exporter = format.make(place);
    ExportLanes(options, lanes, *exporter);
  } catch (const std::system_error& error) {
    if (options.output == "-" && error.code().value() == EPIPE) throw ClosedPipe();
    throw Failure::System(
        options.output == "-" ? "writing to standard output" : "writing " + Quoted(options.output),
        error.code().value());
  }
  place.Commit();
  return exitSuccess;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("LOG", &options->common.logs, "TaskLog files, or folders of recordings");
  list.AddRequired("--to", &options->to,
                   "The format: " + JoinedNames() + ".\nGiven once more with a time, the last time",
                   "FORMAT");
  list.AddRequired(
      "-o,--output", &options->output,
      "Where to write: a file, for ctf, ctf-kernel and parquet a\nnew folder; - is standard output", "OUT");
  list.Add("--from", &options->common.from,
           "First time: 1.5s, 250ms or 12us from the start, or raw\nticks: 1000", "TIME");
  DeclareTaskPatterns(list, options->tasks,
                      "Only what concerns tasks whose names match this shell\npattern; may be repeated");
  DeclareConventions(list, options->common);
  return {[options] { return Export(*options); }, {}, {{"--to", FormatNames()}}};
}

}  // namespace

const Command exportCommand{"export", "Write logs in the formats of other programs",
                            "Examples:\n"
                            "  tasklog export demo-logs --to perfetto -o demo.pftrace\n"
                            "  tasklog export demo.tasklog --to csv --from 1.5s --to 1.52s -o part.csv\n"
                            "  tasklog export demo.tasklog --to sqlite -o demo.db",
                            Declare};

}  // namespace cli
