// tasklog info: what logs hold, in short.
#include "commandline.h"
#include "failure.h"
#include "infoformat.h"
#include "recording.h"
#include "stdoutwriter.h"

namespace cli {
namespace {

struct Options {
  std::vector<std::string> logs;
  bool json = false;
};

void Show(StdoutWriter& out, const Lane& lane, bool json, bool first) {
  const LaneLog loaded = LoadLane(lane);
  if (json) {
    out.Print("{}", first ? "[\n" : ",\n");
    AppendInfoJson(out.Block(), lane, loaded);
  } else {
    out.Print("{}", first ? "" : "\n");
    AppendInfoText(out.Block(), lane, loaded);
  }
}

// What cannot be read does not keep the rest from being shown.
int Info(const Options& options) {
  StdoutWriter out;
  int exitCode = exitSuccess;
  bool first = true;
  for (const Lane& lane : FindLanes(options.logs)) {
    try {
      Show(out, lane, options.json, first);
      first = false;
    } catch (const Failure& failure) {
      out.Finish();  // what was shown before comes before the message
      PrintError(failure.what());
      exitCode = exitFailure;
    }
  }
  if (options.json) out.Print("{}", first ? "[]\n" : "\n]\n");
  out.Finish();
  return exitCode;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("LOG", &options->logs, "TaskLog files, or folders of recordings");
  list.Add("--json", &options->json, "Print JSON: an array with one object for each log");
  return {[options] { return Info(*options); }};
}

}  // namespace

const Command infoCommand{"info", "Show period, counts and categories of logs",
                          "Examples:\n"
                          "  tasklog info demo.tasklog\n"
                          "  tasklog info --json demo-logs",
                          Declare};

}  // namespace cli
