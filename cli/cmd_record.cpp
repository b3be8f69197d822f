// tasklog record: from the controller into TaskLog files. The work is in session.cpp.
#include <fmt/format.h>

#include "args.h"
#include "commandline.h"
#include "failure.h"
#include "session.h"
#include "text.h"

namespace cli {
namespace {

using std::chrono::milliseconds;

struct Options {
  std::string target;
  std::string output;
  std::vector<std::string> loggers;
  bool start = false;
  std::string trigger;
  std::string duration;
  std::string interval;
  bool merge = false;
  std::string split;
  std::string keep;
  std::string until;
  std::string after;
};

void RequireTogether(const std::string& option, const char* name, bool met, const char* others) {
  if (!option.empty() && !met) throw UsageError(fmt::format("{} takes effect only with {}", name, others));
}

RecordRequest Checked(const Options& options) {
  static constexpr milliseconds shortest{1};
  constexpr milliseconds usualInterval{200};
  const bool goesOn = !options.duration.empty() || !options.split.empty() || !options.until.empty();
  if (options.output.empty()) throw UsageError("--output: the name is empty");
  RequireTogether(options.trigger, "--trigger", options.start, "--start");
  RequireTogether(options.interval, "--every", goesOn, "--for, --split or --until");
  RequireTogether(options.keep, "--keep", !options.split.empty(), "--split");
  RequireTogether(options.after, "--after", goesOn, "--for, --split or --until");
  if (options.merge && !options.split.empty()) throw UsageError("--merge does not go with --split");
  RecordRequest request{.target = options.target,
                        .path = options.output,
                        .loggers = ParseLoggers(options.loggers),
                        .merge = options.merge,
                        .start = options.start,
                        .trigger = options.trigger,
                        .goesOn = goesOn,
                        .interval = usualInterval};
  const auto take = [](std::chrono::nanoseconds& time, const char* name, const std::string& text) {
    if (!text.empty()) time = WaitingTime(name, text, shortest);
  };
  take(request.duration, "--for", options.duration);
  take(request.interval, "--every", options.interval);
  take(request.split, "--split", options.split);
  take(request.keep, "--keep", options.keep);
  take(request.after, "--after", options.after);
  if (!options.until.empty()) request.until.emplace(options.until);
  if (request.until && request.until->IsResponse() && options.merge) {
    throw UsageError(
        "--until response: does not go with --merge, which mixes the tasks of several processors");
  }
  return request;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("TARGET", &options->target, "The controller");
  list.AddRequired("-o,--output", &options->output,
                   "Where to save: a file, or with several loggers a folder that\nreceives "
                   "scheduler.tasklog, kernel1.tasklog, ...",
                   "PATH");
  list.Add("--logger", &options->loggers,
           "What to read: scheduler (default), the number of a kernel,\nor all; may be repeated", "WHICH");
  list.Add("--start", &options->start, "Start the loggers first");
  list.Add("--trigger", &options->trigger, "Let this task trigger them (with --start)", "TASK");
  list.Add("--for", &options->duration,
           "Go on reading for so long, such as 10s; Ctrl-C ends it\nearly and saves", "TIME");
  list.Add("--every", &options->interval, "Read so often (with --for; default 200ms)", "TIME");
  list.Add("--split", &options->split, "Write a segment every so often: kernel1.0001.tasklog, ...", "TIME");
  list.Add("--keep", &options->keep, "Remove segments that ended longer ago (with --split)", "TIME");
  list.Add("--until", &options->until,
           "End when this happens: issue:NAME, testpoint:NAME,\nevent:TASK or response:TASK>2ms", "SELECTOR");
  list.Add("--after", &options->after, "Go on for so long behind that; SIGUSR1 counts as it", "TIME");
  list.Add("--merge", &options->merge, "Put all loggers into one file");
  return {[options] { return Record(Checked(*options)); },
          {},
          {{"--until", {"issue:", "testpoint:", "event:", "response:"}}}};
}

}  // namespace

const Command recordCommand{
    "record", "Read loggers of a controller and save what they hold",
    "Examples:\n"
    "  tasklog record demo -o demo.tasklog\n"
    "  tasklog record demo --logger all --start --for 10s -o demo-logs\n"
    "  tasklog record demo --split 5min --keep 1h --until issue:LATE -o night\n"
    "  tasklog record 'faults/burst#7' --start -o burst.tasklog\n"
    "\n"
    "Simulated controllers, to try it without a machine; #7 behind a name sets the seed:\n"
    "  demo, overload, legacy, flaky\n"
    "  faults/ beat, burst, chain, device-wait, inversion, long-job, lost-records,\n"
    "          no-preemption, overload, overrun, slow-stretch\n"
    "  healthy/ high-load, idle-jobs, issues, jitter, two-rates",
    Declare};

}  // namespace cli
