// tasklog list: the entries of a TaskLog file.
#include "cmd_list.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <optional>

#include "args.h"
#include "failure.h"
#include "listformat.h"
#include "logsummary.h"
#include "stdoutwriter.h"
#include "suggest.h"
#include "terminal.h"
#include "text.h"

namespace cli {
namespace {

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

// As typed.
struct Options {
  std::string file;
  std::optional<std::string> task;
  std::vector<std::string> types;
  std::optional<std::string> from;
  std::optional<std::string> to;
  std::string format = "text";
  bool ticks = false;
  std::optional<std::string> limit;
};

// As meant; all that can be judged without the file has been.
struct Request {
  std::string file;
  std::optional<std::string> task;
  std::uint64_t types = 0;
  std::optional<TimePoint> from;
  std::optional<TimePoint> to;
  std::uint64_t limit = unlimited;
  ListStyle style;
};

// The entries of one log to list.
struct Selection {
  std::uint64_t from = 0;
  std::uint64_t to = std::numeric_limits<std::uint64_t>::max();
  std::vector<TLCategory> tasks = {};  // entries that hold one of these; empty for all

  // The library applies no bound that lies outside the log's period, so times are looked at here, too.
  bool Holds(const tasklog::Entry& entry) const {
    const std::uint64_t time = entry.Timestamp();
    return time >= from && time <= to && (tasks.empty() || IsTask(entry, 0) || IsTask(entry, 1));
  }

 private:
  bool IsTask(const tasklog::Entry& entry, std::uint32_t slot) const {
    return std::find(tasks.begin(), tasks.end(), TLEntryGetCategory(entry.Handle(), slot)) != tasks.end();
  }
};

std::uint64_t TypesMask(const std::vector<std::string>& types) {
  std::uint64_t mask = 0;
  for (const std::string& type : types) {
    RequireOneOf("--type", type, {"switch", "event", "testpoint", "issue"});
    if (type == "switch") mask |= TL_LOGS_SWITCHES;
    if (type == "event") mask |= TL_LOGS_TASK_EVENTS;
    if (type == "testpoint") mask |= TL_LOGS_TESTPOINTS;
    if (type == "issue") mask |= TL_LOGS_TIMING_ISSUES;
  }
  return mask;
}

std::optional<TimePoint> CheckedBound(const char* option, const std::optional<std::string>& text) {
  if (!text) return std::nullopt;
  if (const auto time = ParseTimePoint(*text)) return time;
  throw UsageError(fmt::format("{}: {} is not a time such as 1.5s, 250ms or 12us, nor a number of ticks",
                               option, Quoted(*text)));
}

std::uint64_t CheckedLimit(const std::optional<std::string>& text) {
  if (!text) return unlimited;
  if (const auto limit = ParseNumber(*text)) return *limit;
  throw UsageError("--limit: " + Quoted(*text) + " is not a number");
}

Request Checked(const Options& options) {
  RequireOneOf("--format", options.format, {"text", "csv", "json"});
  return {.file = options.file,
          .task = options.task,
          .types = TypesMask(options.types),
          .from = CheckedBound("--from", options.from),
          .to = CheckedBound("--to", options.to),
          .limit = CheckedLimit(options.limit),
          .style = {.format = options.format, .ticks = options.ticks, .colors = WantsColors(STDOUT_FILENO)}};
}

Failure ListingFailed(const Request& request, const std::string& why) {
  return Failure("listing " + Quoted(request.file) + ": " + why);
}

std::uint64_t BoundTicks(const TimePoint& time, const Request& request, const tasklog::Log& log) {
  if (time.ticks) return *time.ticks;
  if (log.TicksPerSecond() == 0) {
    throw ListingFailed(request, "its tick rate is unknown, so --from and --to take only ticks");
  }
  const std::uint64_t distance = time.sinceStart.Ticks(log.TicksPerSecond());
  const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  return distance > most - log.StartTime() ? most : log.StartTime() + distance;
}

// Several tasks may share a name.
std::vector<TLCategory> TasksNamed(const std::string& name, const Request& request, const tasklog::Log& log) {
  std::vector<TLCategory> tasks;
  std::vector<std::string> names;
  for (const auto& task : log.Categories({.types = TL_CATS_TASKS})) {
    if (name == task.Name()) tasks.push_back(task.Handle());
    names.emplace_back(task.Name());
  }
  if (!tasks.empty()) return tasks;
  throw ListingFailed(request, "it has no task " + Quoted(name) + Suggestion(name, names));
}

Selection Select(const Request& request, const tasklog::Log& log) {
  Selection selection;
  if (request.from) selection.from = BoundTicks(*request.from, request, log);
  if (request.to) selection.to = BoundTicks(*request.to, request, log);
  if (selection.from > selection.to) throw UsageError("list: --from is later than --to");
  if (request.task) selection.tasks = TasksNamed(*request.task, request, log);
  return selection;
}

int List(const Request& request) {
  const tasklog::Log log = LoadLog(request.file);
  const Selection selection = Select(request, log);
  const auto format = MakeEntryFormat(log, request.style);
  StdoutWriter out;
  format->Begin(out.Block());
  std::uint64_t left = request.limit;
  for (const auto& entry :
       log.Entries({.types = request.types, .from = selection.from, .to = selection.to})) {
    if (left == 0) break;
    if (!selection.Holds(entry)) continue;
    --left;
    format->Add(out.Block(), entry);
    out.EndOfLine();
  }
  format->End(out.Block());
  out.Finish();
  return exitSuccess;
}

std::function<int()> Declare(CLI::App& app) {
  const auto options = std::make_shared<Options>();
  app.add_option("FILE", options->file, "A TaskLog file")->required()->type_name("");
  app.add_option("--task", options->task, "Only entries that concern this task or happened while it\nran")
      ->type_name("NAME");
  app.add_option("--type", options->types, "Only switch, event, testpoint or issue; may be repeated")
      ->type_name("TYPE")
      ->allow_extra_args(false);
  app.add_option("--from", options->from,
                 "First time: 1.5s, 250ms or 12us from the start, or raw\nticks: 1000")
      ->type_name("TIME");
  app.add_option("--to", options->to, "Last time, written likewise")->type_name("TIME");
  app.add_option("--format", options->format, "text (default), csv or json")->type_name("FORMAT");
  app.add_flag("--ticks", options->ticks, "Print raw ticks in place of seconds");
  app.add_option("--limit", options->limit, "At most so many entries")->type_name("N");
  return [options] { return List(Checked(*options)); };
}

}  // namespace

const Command listCommand{"list", "Show the entries of a TaskLog file in time order",
                          "Examples:\n"
                          "  tasklog list demo.tasklog --type issue\n"
                          "  tasklog list demo.tasklog --task Diagnosis --from 1.5s --to 1.52s\n"
                          "  tasklog list demo.tasklog --format csv > demo.csv",
                          Declare};

}  // namespace cli
