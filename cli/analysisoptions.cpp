#include <CLI/CLI.hpp>

#include "analysedlane.h"

namespace cli {

void DeclareAnalysisOptions(CLI::App& app, AnalysisOptions& options, bool withLogs) {
  if (withLogs) {
    app.add_option("LOG", options.logs, "TaskLog files, or folders of recordings")->required()->type_name("");
  }
  app.add_option("--from", options.from,
                 "First time: 1.5s, 250ms or 12us from the start, or raw\nticks: 1000")
      ->type_name("TIME");
  app.add_option("--to", options.to, "Last time, written likewise")->type_name("TIME");
  DeclareConventions(app, options);
}

void DeclareConventions(CLI::App& app, AnalysisOptions& options) {
  app.add_option("--idle", options.idle, "The idle task (default: as recorded, else by name)")
      ->type_name("NAME");
  app.add_option("--switches", options.switches,
                 "What the types of switches mean: sim, or such as\n0=preempted,1=done,4=waits (default: as "
                 "recorded)")
      ->type_name("MEANINGS");
}

}  // namespace cli
