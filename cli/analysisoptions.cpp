#include "analysedlane.h"
#include "options.h"

namespace cli {

void DeclareAnalysisOptions(OptionList& list, AnalysisOptions& options, bool withLogs) {
  if (withLogs) {
    list.AddRequired("LOG", &options.logs, "TaskLog files, or folders of recordings");
  }
  list.Add("--from", &options.from, "First time: 1.5s, 250ms or 12us from the start, or raw\nticks: 1000",
           "TIME");
  list.Add("--to", &options.to, "Last time, written likewise", "TIME");
  DeclareConventions(list, options);
}

void DeclareConventions(OptionList& list, AnalysisOptions& options) {
  list.Add("--idle", &options.idle, "The idle task (default: as recorded, else by name)", "NAME");
  list.Add("--switches", &options.switches,
           "What the types of switches mean: sim, or such as\n0=preempted,1=done,4=waits (default: as "
           "recorded)",
           "MEANINGS");
}

}  // namespace cli
