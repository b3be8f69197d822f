#include "session.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <set>
#include <utility>

#include "failure.h"
#include "loggerreader.h"
#include "progressbar.h"
#include "recordingoutput.h"
#include "savedfile.h"
#include "signals.h"
#include "stdoutwriter.h"
#include "suggest.h"
#include "text.h"
#include "timeformat.h"

namespace cli {
namespace {

using Clock = std::chrono::steady_clock;

// The first request ends the recording after the read under way, the second also that read.
constexpr int requestsToCancelRead = 2;
// A recording that cannot keep up would fill the screen with the same warning.
constexpr int mostLossWarnings = 5;

class Session {
 public:
  explicit Session(const RecordRequest& request);

  void StartLoggers() const;
  void ReadUntilDone();
  void Save();
  int ExitCode() const { return exitCode_; }

 private:
  struct Source {
    LoggerReader reader;
    const tasklog::Log& log;
    int losses = 0;
    std::set<std::uint32_t> reportedFetches = {};  // statuses
  };

  RecordingOutput MakeOutput() const;
  bool ReadAll();
  bool ReadOne(std::size_t index);
  void ShowProgress(std::size_t index, double fraction);
  void EndEarly(const Source& source, tasklog::Status status);
  void ReportMissingNames(Source& source, tasklog::Status status);
  void ReportLoss(Source& source, const LoggerReader::Outcome& outcome);
  void WarnAboutResult() const;

  const RecordRequest& request_;
  std::vector<Logger> loggers_;
  RecordingOutput output_;
  std::deque<tasklog::Log> logs_;  // one for each file
  std::deque<Source> sources_;     // one for each logger
  ProgressBar bar_;
  Clock::time_point begin_ = Clock::now();
  int rounds_ = 0;  // completed reads of all loggers
  int exitCode_ = exitSuccess;
};

bool GoesIntoFolder(const RecordRequest& request) {
  return !request.merge && (request.loggers.all || request.loggers.loggers.size() > 1);
}

// Those named beside "all" come behind those found, if they are others.
std::vector<Logger> LoggersOf(const RecordRequest& request) {
  if (!request.loggers.all) return request.loggers.loggers;
  std::vector<Logger> loggers = FindLoggers(request.target);
  for (const Logger logger : request.loggers.loggers) {
    if (std::find(loggers.begin(), loggers.end(), logger) == loggers.end()) loggers.push_back(logger);
  }
  return loggers;
}

Session::Session(const RecordRequest& request)
    : request_(request),
      loggers_(LoggersOf(request)),
      output_(MakeOutput()),
      bar_((request.duration.count() > 0 ? "recording " : "reading ") + SafeText(request.target)) {
  logs_.resize(output_.Count());
  for (std::size_t i = 0; i < loggers_.size(); ++i) {
    tasklog::Log& log = logs_[request.merge ? 0 : i];
    sources_.push_back({LoggerReader(request.target, loggers_[i], log), log});
  }
}

RecordingOutput Session::MakeOutput() const {
  if (!GoesIntoFolder(request_)) return RecordingOutput::File(request_.path);
  std::vector<std::string> names;
  for (const Logger logger : loggers_) names.push_back(logger.FileName());
  return RecordingOutput::Folder(request_.path, names);
}

void Session::StartLoggers() const {
  // All names first, so that a logger that cannot be started stops us before any is.
  std::vector<std::string> targets;
  for (const Logger logger : loggers_) targets.push_back(StartTarget(request_.target, logger));
  for (const std::string& target : targets) StartLogger(target, request_.trigger);
}

void Session::ReadUntilDone() {
  begin_ = Clock::now();
  const Clock::time_point end = begin_ + request_.duration;
  Clock::time_point next = begin_;
  for (;;) {
    const bool last = StopRequests() > 0 || Clock::now() >= end;
    if (!ReadAll()) break;
    ++rounds_;
    if (last) break;
    // Reads that take longer than the interval follow each other without a pause, but are not made up for.
    next = std::max(next + request_.interval, Clock::now());
    WaitUntil(std::min(next, end));
  }
  bar_.Clear();
}

bool Session::ReadAll() {
  for (std::size_t i = 0; i < sources_.size(); ++i) {
    if (!ReadOne(i)) return false;
  }
  return true;
}

// False when the recording ends with it.
bool Session::ReadOne(std::size_t index) {
  Source& source = sources_[index];
  const auto outcome = source.reader.Read([&](double fraction) {
    ShowProgress(index, fraction);
    return StopRequests() < requestsToCancelRead;
  });
  if (!outcome.completed) {
    EndEarly(source, outcome.status);
    return false;
  }
  if (!outcome.status) ReportMissingNames(source, outcome.status);
  if (outcome.lostRecords) ReportLoss(source, outcome);
  return true;
}

void Session::ShowProgress(std::size_t index, double fraction) {
  if (request_.duration.count() == 0) {
    return bar_.Show((static_cast<double>(index) + fraction) / static_cast<double>(sources_.size()));
  }
  bar_.Show(std::chrono::duration<double>(Clock::now() - begin_) / request_.duration);
}

void Session::EndEarly(const Source& source, tasklog::Status status) {
  bar_.Clear();
  const bool interrupted = status.Code() == TLErrCanceled && StopRequests() >= requestsToCancelRead;
  const std::string reading = "reading " + source.reader.Description();
  if (rounds_ == 0 && interrupted) {
    throw Failure(reading + ": interrupted before the first read was complete, nothing is saved");
  }
  if (rounds_ == 0) {
    const bool unknown = status.Code() == noSuchVariable;
    throw Failure(reading, status, unknown ? "--logger all takes the loggers that the target has" : "");
  }
  if (interrupted) return;
  exitCode_ = exitFailure;
  PrintError(Failure(reading, status, "the recording ends here").what());
}

// Names that the target does not keep are no failure; names that could not be read are.
void Session::ReportMissingNames(Source& source, tasklog::Status status) {
  if (status.Code() != noSuchVariable) exitCode_ = exitFailure;
  if (!source.reportedFetches.insert(status.Code()).second) return;
  bar_.Clear();
  PrintWarning("reading the names of tasks and testpoints for " + source.reader.Description() + ": " +
               StatusText(status) + " (they are named by their ids)");
}

void Session::ReportLoss(Source& source, const LoggerReader::Outcome& outcome) {
  if (++source.losses > mostLossWarnings) return;
  bar_.Clear();
  const TimeFormat time(source.log.StartTime(), source.log.TicksPerSecond());
  std::string where;
  // In a merged log the ends are those of all loggers together.
  if (time.HasSeconds() && !request_.merge) {
    where = fmt::format(" between {} s and {} s", time.Since(outcome.lastKnownTicks),
                        time.Since(outcome.firstNewTicks));
  }
  PrintWarning(source.reader.Description() + ": records were lost" + where +
               ", the buffer was overwritten between two reads (a shorter --every may help)");
}

void Session::WarnAboutResult() const {
  for (const Source& source : sources_) {
    if (source.losses <= mostLossWarnings) continue;
    PrintWarning(fmt::format("{}: records were lost {} times", source.reader.Description(), source.losses));
  }
  std::vector<std::string> tasks;
  bool empty = true;
  for (const tasklog::Log& log : logs_) {
    for (const auto& task : log.Categories({.types = TL_CATS_TASKS})) tasks.push_back(task.Name());
    empty = empty && log.EntriesCount({.types = UINT64_MAX}) == 0;
  }
  if (empty) PrintWarning("no records were read; is the logger running? (--start starts it)");
  const bool seen = std::find(tasks.begin(), tasks.end(), request_.trigger) != tasks.end();
  if (!request_.trigger.empty() && !seen && !tasks.empty()) {
    PrintWarning("the trigger task " + Quoted(request_.trigger) + " is none of the tasks seen" +
                 Suggestion(request_.trigger, tasks));
  }
}

std::string Described(const SavedFile& saved) {
  const TimeFormat time(0, saved.ticksPerSecond);
  const std::string count = fmt::format("{} {}", saved.entries, saved.entries == 1 ? "entry" : "entries");
  if (saved.entries == 0 || !time.HasSeconds()) return count;
  return count + " over " + time.Length(saved.periodTicks) + " s";
}

void Session::Save() {
  StdoutWriter report;
  for (std::size_t i = 0; i < logs_.size(); ++i) {
    const SavedFile saved = SaveChecked(logs_[i], output_.SavePath(i), output_.ShownPath(i));
    report.Print("{}: {}\n", SafeText(output_.ShownPath(i)), Described(saved));
  }
  output_.Commit();
  WarnAboutResult();
  try {
    report.Finish();
  } catch (const ClosedPipe&) {
    // The files are in their places all the same, and the exit code stays as it is.
  }
}

}  // namespace

int Record(const RecordRequest& request) {
  if (request.loggers.byDefault && WithoutKernelSuffix(request.target) != request.target) {
    PrintWarning("the kernel behind " + Quoted(request.target) +
                 " is not looked at, this reads the scheduler's logger (--logger selects a kernel's)");
  }
  CatchStopSignals();
  Session session(request);
  if (request.start) session.StartLoggers();
  session.ReadUntilDone();
  session.Save();
  return session.ExitCode();
}

}  // namespace cli
