// tasklog repair: what can be saved of a damaged file.
#include <fmt/format.h>

#include "commandline.h"
#include "failure.h"
#include "longwork.h"
#include "partmetadata.h"
#include "stdoutwriter.h"
#include "taskfile/repair.h"
#include "text.h"
#include "timeformat.h"
#include "wholefile.h"

namespace cli {
namespace {

using taskfile::KeptSection;
using taskfile::LostTime;
using taskfile::Salvage;

struct Options {
  std::string path;
  std::string output;
};

std::string Records(std::uint64_t count) { return fmt::format("{} record{}", count, count == 1 ? "" : "s"); }

std::string Length(const LostTime& time, const taskfile::Header& header) {
  const TimeFormat format(0, header.tickRate / header.divisor);
  const std::uint64_t ticks = time.to - time.from;
  return format.HasSeconds() ? format.Length(ticks) + " s" : fmt::format("{} ticks", ticks);
}

// What is known to be lost. How many records lay in bytes that are no section any more, nobody knows.
void PrintReport(StdoutWriter& out, const Options& options, const Salvage& salvage, std::uint64_t size) {
  std::uint64_t kept = 0;
  std::uint64_t lost = 0;
  for (const KeptSection& section : salvage.sections) {
    kept += section.count;
    lost += section.lost;
  }
  const std::uint64_t lostBytes = size - std::min(size, salvage.keptBytes);
  out.Print("{}: {} in {} sections of tasks\n", SafeText(options.output), Records(kept), salvage.foundTasks);
  if (lostBytes == 0 && lost == 0 && salvage.mended.empty()) {
    out.Print("  nothing was lost\n");
    return;
  }
  out.Print("  lost          {} of {} bytes, {} that can be told\n", lostBytes, size, Records(lost));
  for (const KeptSection& section : salvage.sections) {
    if (section.lost > 0)
      out.Print("  of            {}: {}\n", Quoted(taskfile::TextOf(section.section.name)),
                Records(section.lost));
  }
  for (const LostTime& time : salvage.lostTimes)
    out.Print("  incomplete    from {} to {} ticks, {}\n", time.from, time.to, Length(time, salvage.header));
  for (const std::string& mended : salvage.mended) out.Print("  mended        {}\n", SafeText(mended));
}

// The input's metadata, with what is missing as gaps.
std::optional<Metadata> MetadataOf(const Options& options, const Salvage& salvage) {
  const auto& header = salvage.header;
  const Period period{header.startTime, header.stopTime};
  std::vector<Gap> gaps;
  for (const LostTime& time : salvage.lostTimes) gaps.push_back({time.from, time.to});
  return MetadataOfParts({FindSource(options.path, period)}, options.output, period,
                         header.tickRate / header.divisor, gaps);
}

int Repair(const Options& options) {
  LongWork work("repairing " + SafeText(options.path));
  WholeFile file(options.output, {options.path});
  const std::string bytes = ReadWhole(options.path, work.Part(0, 0.3));
  Salvage salvage;
  try {
    salvage = taskfile::Save(bytes, work.Part(0.3, 0.8));
  } catch (const taskfile::NothingLeft&) {
    work.Clear();
    throw Failure("repairing " + Quoted(options.path) +
                  ": nothing is left to save, no section of a TaskLog file is in it");
  }
  taskfile::WriteSaved(bytes, salvage, work.Part(0.8, 1), file.Sink());
  file.Commit(MetadataOf(options, salvage));
  work.Clear();
  StdoutWriter out;
  PrintReport(out, options, salvage, bytes.size());
  out.Finish();
  return exitSuccess;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("FILE", &options->path, "A TaskLog file; it stays as it is");
  list.AddRequired("-o,--output", &options->output, "Where to write what was saved", "PATH");
  return {[options] { return Repair(*options); }};
}

}  // namespace

const Command repairCommand{"repair", "Save what is left of a damaged file",
                            "Example:\n"
                            "  tasklog repair broken.tasklog -o saved.tasklog",
                            Declare};

}  // namespace cli
