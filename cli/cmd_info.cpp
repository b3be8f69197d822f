// tasklog info: what TaskLog files hold, in short.
#include "cmd_info.h"

#include "failure.h"
#include "infoformat.h"
#include "logsummary.h"
#include "stdoutwriter.h"

namespace cli {
namespace {

struct Options {
  std::vector<std::string> files;
  bool json = false;
};

void Show(StdoutWriter& out, const std::string& path, bool json, bool first) {
  const tasklog::Log log = LoadLog(path);
  if (json) {
    out.Print("{}", first ? "[\n" : ",\n");
    AppendInfoJson(out.Block(), path, log);
  } else {
    out.Print("{}", first ? "" : "\n");
    AppendInfoText(out.Block(), path, log);
  }
}

// A file that cannot be read does not keep the others from being shown.
int Info(const Options& options) {
  StdoutWriter out;
  int exitCode = exitSuccess;
  bool first = true;
  for (const std::string& path : options.files) {
    try {
      Show(out, path, options.json, first);
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

std::function<int()> Declare(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files, "TaskLog files")->required()->type_name("");
  app.add_flag("--json", options->json, "Print JSON: an array with one object for each file");
  return [options] { return Info(*options); };
}

}  // namespace

const Command infoCommand{"info", "Show period, counts and categories of TaskLog files",
                          "Examples:\n"
                          "  tasklog info demo.tasklog\n"
                          "  tasklog info --json demo-logs/*.tasklog",
                          Declare};

}  // namespace cli
