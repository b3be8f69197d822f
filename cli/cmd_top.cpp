// tasklog top: what the tasks of a running controller do, from interval to interval.
#include <unistd.h>

#include <algorithm>

#include "analysis/pattern.h"
#include "args.h"
#include "commandline.h"
#include "failure.h"
#include "signals.h"
#include "targetsfile.h"
#include "terminal.h"
#include "text.h"
#include "topscreen.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

struct Options {
  std::string target;
  std::vector<std::string> loggers;
  std::string interval = "1s";
  std::string duration;
  bool start = false;
  std::string sort = "priority";
  std::optional<std::string> idle;
  std::optional<std::string> switches;
};

struct Request {
  LoggerChoice loggers;
  std::chrono::nanoseconds interval{0};
  std::chrono::nanoseconds duration{0};  // 0: until something ends it
  TopOrder order = {};
  analysis::Meanings meanings = {};
  std::string idlePattern = {};
};

Request Checked(const Options& options) {
  constexpr std::chrono::milliseconds shortest{1};
  Request request{.loggers = ParseLoggers(options.loggers),
                  .interval = WaitingTime("--every", options.interval, shortest)};
  if (!options.duration.empty()) request.duration = WaitingTime("--for", options.duration, shortest);
  const auto& columns = TopColumnNames();
  request.order.column =
      static_cast<TopColumn>(std::find(columns.begin(), columns.end(), options.sort) - columns.begin());
  const TargetNotes notes = NotesOn(options.target);
  const std::string switches = options.switches.value_or(notes.switches);
  if (options.switches || !switches.empty()) {
    std::string mistake;
    const auto meanings = analysis::Meanings::Parse(switches, mistake);
    if (!meanings) throw UsageError("--switches: " + SafeText(mistake));  // the notes are checked already
    request.meanings = *meanings;
  }
  request.idlePattern = options.idle ? analysis::PatternOf(*options.idle) : notes.idleTask;
  return request;
}

// The keys need a terminal, too.
std::unique_ptr<TopOutput> MakeOutput(const Options& options, const Request& request) {
  std::unique_ptr<TopOutput> output;
  if (IsTerminal(STDIN_FILENO) && IsTerminal(STDOUT_FILENO))
    output =
        MakeTopScreen(SafeText(options.target) + "   every " + SafeText(options.interval), request.order);
  return output ? std::move(output) : MakeTopLines(request.order);
}

int Top(const Options& options) {
  const Request request = Checked(options);
  WarnAboutSuffix(options.target, request.loggers);
  CatchStopSignals();
  const std::vector<Logger> loggers = ChosenLoggers(options.target, request.loggers);
  if (options.start) StartLoggers(options.target, loggers, {});
  TopReader reader(options.target, loggers, request.meanings, request.idlePattern);
  const Clock::time_point begin = Clock::now();
  const Clock::time_point end =
      request.duration.count() == 0 ? Clock::time_point::max() : begin + request.duration;
  // What the first read has to complain about is printed before a screen covers it.
  if (!reader.ReadAll()) return exitSuccess;
  const std::unique_ptr<TopOutput> output = MakeOutput(options, request);
  output->Show(reader.Loggers());
  for (Clock::time_point next = begin; Clock::now() < end;) {
    next = std::max(next + request.interval, Clock::now());
    TakeKeepRequest();  // there is nothing to keep
    if (!output->WaitUntil(std::min(next, end)) || !reader.ReadAll()) break;
    output->Show(reader.Loggers());
  }
  return reader.LastRoundFailed() ? exitFailure : exitSuccess;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("TARGET", &options->target, "The controller");
  list.Add("--logger", &options->loggers,
           "What to read: scheduler (default), the number of a kernel,\nor all; may be repeated", "WHICH");
  list.Add("--every", &options->interval, "Read so often (default 1s)", "TIME");
  list.Add("--for", &options->duration, "End after so long", "TIME");
  list.Add("--start", &options->start, "Start the loggers first");
  list.Add("--sort", &options->sort,
           "By priority (default), load, jobs, response, issues, each also\n"
           "with -all behind it, or name",
           "COLUMN");
  list.Add("--idle", &options->idle, "The idle task (default: as noted for the target, else by\nname)",
           "NAME");
  list.Add("--switches", &options->switches,
           "What the types of switches mean: sim, or such as\n0=preempted,1=done,4=waits (default: as "
           "noted for the\ntarget)",
           "MEANINGS");
  return {[options] { return Top(*options); }, {{"--sort", TopColumnNames()}}};
}

}  // namespace

const Command topCommand{"top", "Watch the tasks of a running controller",
                         "On a terminal: q quits, p pauses, s sorts by the next column.\n\n"
                         "Examples:\n"
                         "  tasklog top demo --start\n"
                         "  tasklog top demo --logger all --every 500ms --sort load\n"
                         "  tasklog top demo --for 10s > demo.txt",
                         Declare};

}  // namespace cli
