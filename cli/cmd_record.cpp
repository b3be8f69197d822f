// tasklog record: from the controller into TaskLog files. The work is in session.cpp.
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
};

RecordRequest Checked(const Options& options) {
  constexpr milliseconds shortest{1};
  constexpr milliseconds usualInterval{200};
  if (options.output.empty()) throw UsageError("--output: the name is empty");
  if (!options.trigger.empty() && !options.start)
    throw UsageError("--trigger takes effect only with --start");
  if (!options.interval.empty() && options.duration.empty()) {
    throw UsageError("--every takes effect only with --for");
  }
  RecordRequest request{.target = options.target,
                        .path = options.output,
                        .loggers = ParseLoggers(options.loggers),
                        .merge = options.merge,
                        .start = options.start,
                        .trigger = options.trigger,
                        .interval = usualInterval};
  if (!options.duration.empty()) request.duration = WaitingTime("--for", options.duration, shortest);
  if (!options.interval.empty()) request.interval = WaitingTime("--every", options.interval, shortest);
  return request;
}

std::function<int()> Declare(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  app.add_option("TARGET", options->target, "The controller")->required()->type_name("");
  app.add_option("-o,--output", options->output,
                 "Where to save: a file, or with several loggers a folder that\nreceives "
                 "scheduler.tasklog, kernel1.tasklog, ...")
      ->required()
      ->type_name("PATH");
  app.add_option("--logger", options->loggers,
                 "What to read: scheduler (default), the number of a kernel,\nor all; may be repeated")
      ->type_name("WHICH")
      ->allow_extra_args(false);
  app.add_flag("--start", options->start, "Start the loggers first");
  app.add_option("--trigger", options->trigger, "Let this task trigger them (with --start)")
      ->type_name("TASK");
  app.add_option("--for", options->duration,
                 "Go on reading for so long, such as 10s; Ctrl-C ends it\nearly and saves")
      ->type_name("TIME");
  app.add_option("--every", options->interval, "Read so often (with --for; default 200ms)")
      ->type_name("TIME");
  app.add_flag("--merge", options->merge, "Put all loggers into one file");
  return [options] { return Record(Checked(*options)); };
}

}  // namespace

const Command recordCommand{"record", "Read loggers of a controller and save what they hold",
                            "Examples:\n"
                            "  tasklog record demo -o demo.tasklog\n"
                            "  tasklog record demo --logger all --start --for 10s -o demo-logs",
                            Declare};

}  // namespace cli
