// tasklog compact: the small files of a dataset joined. docs/fleet.md describes it.
#include "commandline.h"
#include "compaction.h"
#include "failure.h"
#include "progressbar.h"
#include "signals.h"
#include "stdoutwriter.h"
#include "text.h"

namespace cli {
namespace {

int Compact(const std::string& dataset) {
  Compaction compaction(dataset);
  ProgressBar bar("joining");
  int exitCode = exitSuccess;
  CatchStopSignals();
  compaction.Run([&](double done) { bar.Show(done); },
                 [&](const std::string& complaint) {
                   bar.Clear();
                   PrintError(complaint);
                   exitCode = exitFailure;
                 });
  bar.Clear();
  StdoutWriter out;
  out.Print("{}: {} files of {} days, {} before\n", SafeText(dataset), compaction.FilesAfter(),
            compaction.Days(), compaction.FilesBefore());
  out.Finish();
  if (StopRequests() > 0) throw Failure("interrupted; the next run goes on");
  return exitCode;
}

Declared Declare(OptionList& list) {
  const auto dataset = std::make_shared<std::string>();
  list.AddRequired("DATASET", dataset.get(), "A folder that summarize wrote");
  return {[dataset] { return Compact(*dataset); }};
}

}  // namespace

const Command compactCommand{"compact", "Join the small files of a dataset",
                             "Example:\n"
                             "  tasklog compact fleet",
                             Declare};

}  // namespace cli
