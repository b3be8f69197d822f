// tasklog list: the entries of logs.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <optional>

#include "bounds.h"
#include "commandline.h"
#include "failure.h"
#include "listformat.h"
#include "recording.h"
#include "stdoutwriter.h"
#include "suggest.h"
#include "terminal.h"
#include "text.h"

namespace cli {
namespace {

constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

// As typed.
struct Options {
  std::vector<std::string> logs;
  std::optional<std::string> task;
  std::vector<std::string> types;
  std::optional<std::string> from;
  std::optional<std::string> to;
  std::string format = "text";
  bool ticks = false;
  std::optional<std::string> limit;
};

// As meant; all that can be judged without the logs has been.
struct Request {
  std::vector<std::string> logs;
  std::optional<std::string> task;
  std::uint64_t types = 0;
  std::optional<TimePoint> from;
  std::optional<TimePoint> to;
  std::uint64_t limit = unlimited;
  ListStyle style;
};

// The entries of one log to list.
struct Selection {
  Bounds period = {};
  std::vector<TLCategory> tasks = {};  // entries that hold one of these; empty for all

  // The library applies no bound that lies outside the log's period, so times are looked at here, too.
  bool Holds(const tasklog::Entry& entry) const {
    const std::uint64_t time = entry.Timestamp();
    return time >= period.from && time <= period.to &&
           (tasks.empty() || IsTask(entry, 0) || IsTask(entry, 1));
  }

 private:
  bool IsTask(const tasklog::Entry& entry, std::uint32_t slot) const {
    return std::find(tasks.begin(), tasks.end(), TLEntryGetCategory(entry.Handle(), slot)) != tasks.end();
  }
};

std::uint64_t TypesMask(const std::vector<std::string>& types) {
  std::uint64_t mask = 0;
  for (const std::string& type : types) {
    if (type == "switch") mask |= TL_LOGS_SWITCHES;
    if (type == "event") mask |= TL_LOGS_TASK_EVENTS;
    if (type == "testpoint") mask |= TL_LOGS_TESTPOINTS;
    if (type == "issue") mask |= TL_LOGS_TIMING_ISSUES;
  }
  return mask;
}

std::uint64_t CheckedLimit(const std::optional<std::string>& text) {
  if (!text) return unlimited;
  if (const auto limit = ParseNumber(*text)) return *limit;
  throw UsageError("--limit: " + Quoted(*text) + " is not a number");
}

Request Checked(const Options& options) {
  return {.logs = options.logs,
          .task = options.task,
          .types = TypesMask(options.types),
          .from = CheckedBound("--from", options.from),
          .to = CheckedBound("--to", options.to),
          .limit = CheckedLimit(options.limit),
          .style = {.format = options.format, .ticks = options.ticks, .colors = WantsColors(STDOUT_FILENO)}};
}

// Lists lane after lane. Text has a heading for each when there are several; CSV and JSON say the lane of
// each entry.
class Lister {
 public:
  explicit Lister(const Request& request) : request_(request), lanes_(FindLanes(request.logs)) {}

  void List() {
    for (const Lane& lane : lanes_) ListLane(lane);
    if (request_.task && !taskFound_) {
      throw Failure("listing " + Quoted(request_.logs[0]) + ": it has no task " + Quoted(*request_.task) +
                    Suggestion(*request_.task, tasksSeen_));
    }
    if (format_) format_->End(out_.Block());
    out_.Finish();
  }

 private:
  void ListLane(const Lane& lane) {
    const LaneLog loaded = LoadLane(lane);
    const auto selection = Select(lane, loaded.log);
    if (!selection) return;
    BeginLane(lane, loaded.log);
    std::uint64_t left = request_.limit;  // of each lane
    for (const auto& entry : loaded.log.Entries(
             {.types = request_.types, .from = selection->period.from, .to = selection->period.to})) {
      if (left == 0) break;
      if (!selection->Holds(entry)) continue;
      --left;
      ++listed_;
      format_->Add(out_.Block(), entry);
      out_.EndOfLine();
    }
  }

  // Empty when the lane lacks the task.
  std::optional<Selection> Select(const Lane& lane, const tasklog::Log& log) {
    Selection selection{BoundsIn(log, request_.from, request_.to, "list", "listing " + Quoted(lane.shownAs))};
    if (!request_.task) return selection;
    selection.tasks = TasksNamed(*request_.task, log);
    taskFound_ = taskFound_ || !selection.tasks.empty();
    return selection.tasks.empty() ? std::nullopt : std::optional(selection);
  }

  // Several tasks may share a name.
  std::vector<TLCategory> TasksNamed(const std::string& name, const tasklog::Log& log) {
    std::vector<TLCategory> tasks;
    for (const auto& task : log.Categories({.types = TL_CATS_TASKS})) {
      if (name == task.Name()) tasks.push_back(task.Handle());
      tasksSeen_.emplace_back(task.Name());
    }
    return tasks;
  }

  void BeginLane(const Lane& lane, const tasklog::Log& log) {
    const bool several = lanes_.size() > 1;
    if (several && request_.style.format == "text") {
      out_.Print("{}{}\n", format_ ? "\n" : "", SafeText(lane.shownAs));
    }
    ListStyle style = request_.style;
    if (several) style.lane = lane.name;
    style.continues = format_ != nullptr;
    style.continuesEntries = listed_ > 0;
    format_ = MakeEntryFormat(log, style);
    format_->Begin(out_.Block());
  }

  const Request& request_;
  std::vector<Lane> lanes_;
  std::unique_ptr<EntryFormat> format_;
  StdoutWriter out_;
  std::uint64_t listed_ = 0;
  bool taskFound_ = false;
  std::vector<std::string> tasksSeen_;
};

int List(const Request& request) {
  Lister(request).List();
  return exitSuccess;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  list.AddRequired("LOG", &options->logs, "TaskLog files, or folders of recordings");
  list.Add("--task", &options->task, "Only entries that concern this task or happened while it\nran", "NAME");
  list.Add("--type", &options->types, "Only switch, event, testpoint or issue; may be repeated", "TYPE");
  list.Add("--from", &options->from, "First time: 1.5s, 250ms or 12us from the start, or raw\nticks: 1000",
           "TIME");
  list.Add("--to", &options->to, "Last time, written likewise", "TIME");
  list.Add("--format", &options->format, "text (default), csv or json", "FORMAT");
  list.Add("--ticks", &options->ticks, "Print raw ticks in place of seconds");
  list.Add("--limit", &options->limit, "At most so many entries", "N");
  return {[options] { return List(Checked(*options)); },
          {{"--type", {"switch", "event", "testpoint", "issue"}}, {"--format", {"text", "csv", "json"}}}};
}

}  // namespace

const Command listCommand{"list", "Show the entries of logs in time order",
                          "Examples:\n"
                          "  tasklog list demo.tasklog --type issue\n"
                          "  tasklog list demo.tasklog --task Diagnosis --from 1.5s --to 1.52s\n"
                          "  tasklog list demo.tasklog --format csv > demo.csv",
                          Declare};

}  // namespace cli
