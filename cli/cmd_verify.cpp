// tasklog verify: whether TaskLog files are whole.
#include "commandline.h"
#include "failure.h"
#include "longwork.h"
#include "signals.h"
#include "stdoutwriter.h"
#include "text.h"
#include "verifyformat.h"

namespace cli {
namespace {

struct Options {
  std::vector<std::string> files;
  bool json = false;
};

// Whether the file is sound.
bool Verify(VerifyFormat& format, const std::string& path) {
  LongWork work("verifying " + SafeText(path));
  const std::string bytes = ReadWhole(path, work.Part(0, 0.4));
  const taskfile::Findings findings = taskfile::Check(bytes, work.Part(0.4, 0.7));
  const bool isSound = !findings.fault;
  std::optional<taskfile::Remarks> remarks;
  if (isSound) remarks = taskfile::FindRemarks(bytes, findings.header, findings.sections, work.Part(0.7, 1));
  work.Clear();
  format.Add({path, findings, isSound || taskfile::AsReaderTakesIt(bytes), remarks});
  return isSound;
}

int VerifyAll(const Options& options) {
  StdoutWriter out;
  const auto format = options.json ? MakeVerifyJson(out.Block()) : MakeVerifyText(out.Block());
  int exitCode = exitSuccess;
  for (const std::string& path : options.files) {
    try {
      if (!Verify(*format, path)) exitCode = exitFailure;
      out.EndOfLine();
    } catch (const Failure& failure) {
      out.Finish();  // what was shown before comes before the message
      PrintError(failure.what());
      exitCode = exitFailure;
      if (StopRequests() > 0) break;
    }
  }
  format->End();
  out.Finish();
  return exitCode;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("FILE", &options->files, "TaskLog files");
  list.Add("--json", &options->json, "Print JSON: an object with what was found in each file");
  return {[options] { return VerifyAll(*options); }};
}

}  // namespace

const Command verifyCommand{"verify", "Check that files are whole, and name the first fault",
                            "The exit code is 0 when all files are sound, else 1.\n\n"
                            "Examples:\n"
                            "  tasklog verify demo.tasklog\n"
                            "  tasklog verify --json demo-logs/*.tasklog",
                            Declare};

}  // namespace cli
