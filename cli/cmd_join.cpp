// tasklog join: pieces of one logger's log, one after the other.
#include <algorithm>
#include <deque>
#include <set>
#include <tuple>

#include "commandline.h"
#include "failure.h"
#include "partmetadata.h"
#include "segments.h"
#include "soundfile.h"
#include "stdoutwriter.h"
#include "taskfile/join.h"
#include "text.h"
#include "wholefile.h"

namespace cli {
namespace {

struct Options {
  std::vector<std::string> paths;
  std::string output;
};

struct Input {
  SoundFile file;
  SourceFile source;
};

Failure CannotJoin(const Input& a, const Input& b, const std::string& why) {
  return Failure("joining " + Quoted(a.source.path) + " and " + Quoted(b.source.path) + ": " + why);
}

std::set<std::tuple<std::string_view, std::uint32_t>> TasksOf(const SoundFile& file) {
  std::set<std::tuple<std::string_view, std::uint32_t>> tasks;
  for (const taskfile::Section& section : file.sections)
    if (section.kind == taskfile::Kind::task)
      tasks.insert({taskfile::TextOf(section.name), section.priority});
  return tasks;
}

// Without metadata, by the tasks that both have: at least half of what the one with fewer has.
bool ShareTasks(const SoundFile& a, const SoundFile& b) {
  const auto tasksOfA = TasksOf(a);
  const auto tasksOfB = TasksOf(b);
  const auto shared = static_cast<std::size_t>(std::count_if(
      tasksOfA.begin(), tasksOfA.end(), [&](const auto& task) { return tasksOfB.count(task) > 0; }));
  return shared * 2 >= std::min(tasksOfA.size(), tasksOfB.size());
}

void RequireOneLogger(const Input& a, const Input& b) {
  if (a.file.header.Version() != b.file.header.Version())
    throw CannotJoin(a, b, "they are of different versions of the format");
  if (a.file.TicksPerSecond() != b.file.TicksPerSecond())
    throw CannotJoin(a, b, "their tick rates differ, so they are of different loggers");
  const LaneFile& notedOfA = a.source.noted;
  const LaneFile& notedOfB = b.source.noted;
  if (!notedOfA.metadata || !notedOfB.metadata) {
    if (ShareTasks(a.file, b.file)) return;
    throw CannotJoin(a, b, "they have few tasks in common, so they are of different loggers");
  }
  if (notedOfA.metadata->target != notedOfB.metadata->target)
    throw CannotJoin(a, b,
                     "they are of the targets " + Quoted(notedOfA.metadata->target) + " and " +
                         Quoted(notedOfB.metadata->target));
  if (notedOfA.logger->name != notedOfB.logger->name ||
      notedOfA.metadata->merged != notedOfB.metadata->merged)
    throw CannotJoin(
        a, b,
        "they are of the loggers " + Quoted(notedOfA.logger->name) + " and " + Quoted(notedOfB.logger->name));
}

// In the order of time.
std::deque<Input> ReadInputs(const std::vector<std::string>& paths, LongWork& work) {
  std::deque<Input> inputs;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const double share = 0.5 / static_cast<double>(paths.size());
    const double done = static_cast<double>(i);
    SoundFile file = ReadSound(paths[i], work.Part(share * done, share * (done + 1)));
    SourceFile source = FindSource(paths[i], file.Covered());
    inputs.push_back({std::move(file), std::move(source)});
    if (i > 0) RequireOneLogger(inputs.front(), inputs.back());
  }
  std::stable_sort(inputs.begin(), inputs.end(), [](const Input& a, const Input& b) {
    return std::tuple(a.source.period.start, a.source.period.stop) <
           std::tuple(b.source.period.start, b.source.period.stop);
  });
  return inputs;
}

int Join(const Options& options) {
  if (options.paths.size() < 2) throw UsageError("join: it takes two files or more");
  LongWork work("joining");
  WholeFile file(options.output, options.paths);
  const std::deque<Input> inputs = ReadInputs(options.paths, work);
  std::vector<std::string> paths;
  std::vector<Period> periods;
  std::vector<SourceFile> sources;
  for (const Input& input : inputs) {
    paths.push_back(input.source.path);
    periods.push_back(input.source.period);
    sources.push_back(input.source);
  }
  std::vector<Gap> gaps;
  const auto parts = WithoutOverlaps(paths, periods, gaps);
  if (parts.empty()) throw Failure("joining: nothing was recorded in any of the files");
  std::vector<taskfile::Piece> pieces;
  for (const FilePart& part : parts)
    pieces.push_back({inputs[part.file].file.bytes, part.from, part.to, &part == parts.data()});
  const Period period{periods[parts.front().file].start, periods[parts.back().file].stop};
  taskfile::WriteJoined(pieces, period.start, period.stop, work.Part(0.5, 1), file.Sink());
  const std::uint64_t rate = inputs.front().file.TicksPerSecond();
  file.Commit(MetadataOfParts(sources, options.output, period, rate, gaps));
  work.Clear();
  StdoutWriter out;
  out.Print("{}: from {} to {} ticks, {} pieces\n", SafeText(options.output), period.start, period.stop,
            pieces.size());
  for (const Gap& gap : gaps) out.Print("  gap           from {} to {} ticks\n", gap.from, gap.to);
  out.Finish();
  return exitSuccess;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("FILE", &options->paths, "TaskLog files of one logger; they stay as they are");
  list.AddRequired("-o,--output", &options->output, "Where to write the whole", "PATH");
  return {[options] { return Join(*options); }};
}

}  // namespace

const Command joinCommand{"join", "Put pieces of one logger's log together",
                          "Examples:\n"
                          "  tasklog join kernel1.0001.tasklog kernel1.0002.tasklog -o kernel1.tasklog",
                          Declare};

}  // namespace cli
