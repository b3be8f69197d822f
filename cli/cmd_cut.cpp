// tasklog cut: the part of a file between two times.
#include "bounds.h"
#include "commandline.h"
#include "failure.h"
#include "partmetadata.h"
#include "soundfile.h"
#include "stdoutwriter.h"
#include "taskfile/join.h"
#include "text.h"
#include "wholefile.h"

namespace cli {
namespace {

struct Options {
  std::string path;
  std::optional<std::string> from;
  std::optional<std::string> to;
  std::string output;
};

int Cut(const Options& options) {
  const auto from = CheckedBound("--from", options.from);
  const auto to = CheckedBound("--to", options.to);
  if (!from && !to) throw UsageError("cut: it takes --from, --to or both");
  LongWork work("cutting " + SafeText(options.path));
  WholeFile file(options.output, {options.path});
  const SoundFile input = ReadSound(options.path, work.Part(0, 0.5));
  const std::string doing = "cutting " + Quoted(options.path);
  const Bounds bounds = BoundsIn({input.header.startTime, input.TicksPerSecond()}, from, to, "cut", doing);
  const Period period{std::max(bounds.from, input.header.startTime),
                      std::min(bounds.to, input.header.stopTime)};
  if (period.start > period.stop) {
    throw Failure(doing + ": nothing lies there; the log goes from " +
                  std::to_string(input.header.startTime) + " to " + std::to_string(input.header.stopTime) +
                  " ticks");
  }
  taskfile::WriteJoined({{input.bytes, bounds.from, bounds.to}}, period.start, period.stop, work.Part(0.5, 1),
                        file.Sink());
  const SourceFile source = FindSource(options.path, input.Covered());
  file.Commit(MetadataOfParts({source}, options.output, period, input.TicksPerSecond(), {}));
  work.Clear();
  StdoutWriter out;
  out.Print("{}: from {} to {} ticks\n", SafeText(options.output), period.start, period.stop);
  out.Finish();
  return exitSuccess;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("FILE", &options->path, "A TaskLog file; it stays as it is");
  list.Add("--from", &options->from, "The first time of the part", "TIME");
  list.Add("--to", &options->to, "The last time of the part", "TIME");
  list.AddRequired("-o,--output", &options->output, "Where to write the part", "PATH");
  return {[options] { return Cut(*options); }};
}

}  // namespace

const Command cutCommand{
    "cut", "Take the part of a file between two times",
    "A time is a length such as 1.5s from the start of the log, or a number of ticks.\n\n"
    "Example:\n"
    "  tasklog cut night.tasklog --from 3h --to 3.2h -o late.tasklog",
    Declare};

}  // namespace cli
