// tasklog start: starts a logger and leaves it running.
#include "commandline.h"
#include "failure.h"
#include "logger.h"
#include "stdoutwriter.h"
#include "text.h"

namespace cli {
namespace {

struct Options {
  std::string target;
  std::string trigger;
};

int Start(const Options& options) {
  StartLogger(options.target, options.trigger);
  StdoutWriter out;
  out.Print("started the logger of {}{}\n", Quoted(options.target),
            options.trigger.empty() ? "" : ", trigger task " + Quoted(options.trigger));
  out.Finish();
  return exitSuccess;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("TARGET", &options->target,
                   "The controller; /@2 behind its name selects the logger of\nkernel 2");
  list.Add("--trigger", &options->trigger, "Let this task trigger the logger", "TASK");
  return {[options] { return Start(*options); }};
}

}  // namespace

const Command startCommand{"start", "Start the logger of a controller",
                           "Examples:\n"
                           "  tasklog start demo\n"
                           "  tasklog start demo/@1 --trigger PositionLoop",
                           Declare};

}  // namespace cli
