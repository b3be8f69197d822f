// tasklog summarize: recordings as rows of a dataset, which engines ask. docs/fleet.md describes it.
#include <algorithm>
#include <atomic>
#include <fstream>
#include <iostream>
#include <thread>

#include "commandline.h"
#include "failure.h"
#include "progressbar.h"
#include "signals.h"
#include "stdoutwriter.h"
#include "summarizer.h"
#include "text.h"

namespace cli {
namespace {

struct Options {
  AnalysisOptions common;
  std::string filesFrom;
  std::string output;
  std::string machine;
  std::string day;
  std::string jobs;
};

// Works on recordings in several threads, and counts what came of them.
class Crew {
 public:
  Crew(Summarizer& summarizer, const std::vector<std::string>& paths)
      : summarizer_(summarizer), paths_(paths) {}

  void Work(std::size_t threads) {
    std::vector<std::jthread> others;
    for (std::size_t i = 1; i < std::min(threads, paths_.size()); ++i)
      others.emplace_back([this] { TakeAll(); });
    TakeAll();
  }

  std::uint64_t Count(Summarized::Outcome outcome) const {
    return counts_[static_cast<std::size_t>(outcome)];
  }
  std::uint64_t Entries() const { return entries_; }
  std::uint64_t Failed() const { return failed_; }
  void ClearProgress() { bar_.Clear(); }

 private:
  void TakeAll() {
    while (StopRequests() == 0) {
      const std::size_t place = next_++;
      if (place >= paths_.size()) return;
      Take(paths_[place]);
    }
  }

  void Take(const std::string& path) {
    std::string complaint;
    try {
      const Summarized summarized = summarizer_.Summarize(path);
      ++counts_[static_cast<std::size_t>(summarized.outcome)];
      entries_ += summarized.entries;
    } catch (const std::bad_alloc&) {
      complaint = "summary of " + Quoted(path) + ": Out of memory";
    } catch (const std::exception& error) {
      complaint = error.what();
    }
    const std::lock_guard lock(show_);
    if (!complaint.empty()) {
      ++failed_;
      bar_.Clear();
      PrintError(complaint);
    }
    bar_.Show(static_cast<double>(++done_) / static_cast<double>(paths_.size()));
  }

  Summarizer& summarizer_;
  const std::vector<std::string>& paths_;
  std::atomic<std::size_t> next_ = 0;
  std::array<std::atomic<std::uint64_t>, 3> counts_ = {};
  std::atomic<std::uint64_t> entries_ = 0;
  std::mutex show_;
  std::size_t done_ = 0;
  std::uint64_t failed_ = 0;
  ProgressBar bar_{"summarizing"};
};

void AddLines(std::istream& in, const std::string& name, std::vector<std::string>& paths) {
  for (std::string line; std::getline(in, line);)
    if (!line.empty()) paths.push_back(line);
  if (!in.eof()) throw Failure("reading " + Quoted(name) + ": it cannot be read");
}

std::vector<std::string> PathsOf(const Options& options) {
  std::vector<std::string> paths = options.common.logs;
  if (options.filesFrom == "-") {
    AddLines(std::cin, "standard input", paths);
  } else if (!options.filesFrom.empty()) {
    std::ifstream list(options.filesFrom);
    AddLines(list, options.filesFrom, paths);
  }
  if (paths.empty() && options.filesFrom.empty()) throw UsageError("summarize: no LOG is given");
  return paths;
}

std::size_t ThreadsOf(const Options& options) {
  constexpr std::uint64_t most = 1024;
  if (options.jobs.empty()) return std::max(1u, std::thread::hardware_concurrency());
  const auto number = ParseNumber(options.jobs);
  if (!number || *number == 0 || *number > most)
    throw UsageError("--jobs: " + Quoted(options.jobs) + " is not a number from 1 to 1024");
  return static_cast<std::size_t>(*number);
}

int Summarize(const Options& options) {
  if (!options.day.empty() && !IsDay(options.day))
    throw UsageError("--day: " + Quoted(options.day) + " is not a day such as 2026-11-23");
  const LaneLoader checked("summary", options.common);  // a mistake in --switches is told once
  const std::vector<std::string> paths = PathsOf(options);
  const std::size_t threads = ThreadsOf(options);
  Dataset dataset(options.output);
  Summarizer summarizer(options.common, options.machine, options.day, dataset);
  Crew crew(summarizer, paths);
  CatchStopSignals();
  crew.Work(threads);
  crew.ClearProgress();
  StdoutWriter out;
  out.Print("{}: {} added, {} already there, {} broken, {} not read; {} entries\n", SafeText(options.output),
            crew.Count(Summarized::Outcome::added), crew.Count(Summarized::Outcome::known),
            crew.Count(Summarized::Outcome::broken), crew.Failed(), crew.Entries());
  out.Finish();
  if (StopRequests() > 0) throw Failure("interrupted; what was added stays, the next run goes on");
  return crew.Failed() > 0 ? exitFailure : exitSuccess;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.Add("LOG", &options->common.logs, "Recordings: TaskLog files, or folders");
  list.AddRequired("-o,--output", &options->output, "The dataset to add to: a folder", "DATASET");
  list.Add("--files-from", &options->filesFrom,
           "Also the recordings that this file lists, one a\nline; - is standard input", "FILE");
  list.Add("--machine", &options->machine, "The machine that recorded (default: the target, as\nrecorded)",
           "NAME");
  list.Add("--day", &options->day,
           "The day of the recordings, such as 2026-11-23 (default:\nas recorded, UTC)", "DAY");
  DeclareConventions(list, options->common);
  list.Add("--jobs", &options->jobs, "How many recordings at a time (default: one a core)", "N");
  return {[options] { return Summarize(*options); }};
}

}  // namespace

const Command summarizeCommand{
    "summarize", "Add statistics and findings of recordings to a dataset",
    "Examples:\n"
    "  tasklog summarize logs/* -o fleet\n"
    "  find /logs -name '*.tasklog' | tasklog summarize --files-from - -o fleet\n"
    "  tasklog summarize press.tasklog --machine press-7 --day 2026-11-23 -o fleet",
    Declare};

}  // namespace cli
