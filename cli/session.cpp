#include "session.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <set>
#include <utility>

#include "failure.h"
#include "loggerreader.h"
#include "progressbar.h"
#include "recorder.h"
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

  void StartLoggers() const { cli::StartLoggers(request_.target, loggers_, request_.trigger); }
  void ReadUntilDone();
  void Save();
  int ExitCode() const { return exitCode_; }

 private:
  struct Source {
    LoggerReader reader;
    RecordedLogger& notes;
    int losses = 0;
    std::uint64_t awaitedFrom = 0;                 // here the search for what --until names goes on
    std::set<std::uint32_t> reportedFetches = {};  // statuses
  };

  bool ReadAll();
  bool ReadOne(std::size_t index);
  void ShowProgress(std::size_t index, double fraction);
  void BeginSegment();
  void LookForEnd();
  void LookForTrigger();
  void EndSoon(const Happening& happening);
  void EndEarly(const Source& source, tasklog::Status status);
  void ReportMissingNames(Source& source, tasklog::Status status);
  void ReportLoss(Source& source, const LoggerReader::Outcome& outcome);
  void NoteWhatWasSeen();
  void WarnAboutResult() const;
  std::string DescribedEnd() const;

  const RecordRequest& request_;
  std::vector<Logger> loggers_;
  Recorder recorder_;
  std::deque<tasklog::Log> logs_;  // one for each file
  std::deque<Source> sources_;     // one for each logger
  ProgressBar bar_;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point end_ = begin_;
  std::uint64_t rounds_ = 0;  // completed reads of all loggers
  bool anyEntries_ = false;
  std::set<std::string> tasksSeen_;
  std::set<std::string> awaitedSeen_;  // names that --until might have meant
  int exitCode_ = exitSuccess;
};

// The files are in their places even if nobody reads this.
void PrintReport(std::string_view lines) {
  StdoutWriter out;
  out.Block().append(lines);
  try {
    out.Finish();
  } catch (const ClosedPipe&) {
    return;
  }
}

Session::Session(const RecordRequest& request)
    : request_(request),
      loggers_(ChosenLoggers(request.target, request.loggers)),
      recorder_(request, loggers_),
      bar_((request.goesOn ? "recording " : "reading ") + SafeText(request.target)) {
  logs_.resize(recorder_.FileCount());
  for (std::size_t i = 0; i < loggers_.size(); ++i) {
    sources_.push_back({LoggerReader(request.target, loggers_[i], logs_[request.merge ? 0 : i]),
                        recorder_.Notes().loggers[i]});
  }
}

void Session::ReadUntilDone() {
  begin_ = Clock::now();
  end_ = request_.goesOn && request_.duration.count() == 0 ? Clock::time_point::max()
                                                           : begin_ + request_.duration;
  Clock::time_point next = begin_;
  Clock::time_point segmentEnd = begin_ + request_.split;
  for (;;) {
    const bool last = StopRequests() > 0 || Clock::now() >= end_;
    if (!ReadAll()) break;
    ++rounds_;
    if (last) break;
    if (request_.goesOn) LookForEnd();
    if (request_.split.count() > 0 && Clock::now() >= segmentEnd) {
      BeginSegment();
      segmentEnd += request_.split;
    }
    // Reads that take longer than the interval follow each other without a pause, but are not made up for.
    next = std::max(next + request_.interval, Clock::now());
    WaitUntil(std::min(next, end_));
  }
  bar_.Clear();
}

// The next segment begins with what the buffers still hold, so the two overlap unless records were lost.
void Session::BeginSegment() {
  bar_.Clear();
  NoteWhatWasSeen();
  PrintReport(recorder_.SaveSegment(logs_));
  for (std::size_t i = 0; i < logs_.size(); ++i) {
    logs_[i] = tasklog::Log();
    sources_[i].reader.GoOnIn(logs_[i]);
  }
}

void Session::LookForEnd() {
  if (recorder_.Notes().endedBy) return;
  if (TakeKeepRequest()) return EndSoon({"SIGUSR1", {}, 0});
  if (request_.until) LookForTrigger();
}

// What was in a buffer before the recording began has happened before. The last tick of a log may get more
// entries, so it is looked at when the next one is there.
void Session::LookForTrigger() {
  for (Source& source : sources_) {
    const std::uint64_t stop = source.reader.Log().StopTime();
    const std::uint64_t from = std::exchange(source.awaitedFrom, stop);
    if ((rounds_ == 1 && !request_.start) || stop <= from) continue;
    const auto ticks = request_.until->FirstIn(source.reader.Log(), from, stop - 1, recorder_.Notes());
    if (ticks) return EndSoon({request_.until->Selector(), request_.merge ? "" : source.notes.name, *ticks});
  }
}

void Session::EndSoon(const Happening& happening) {
  recorder_.Notes().endedBy = happening;
  end_ = Clock::now() + request_.after;
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
  ++source.notes.reads;
  if (!outcome.status) ReportMissingNames(source, outcome.status);
  if (outcome.lostRecords) ReportLoss(source, outcome);
  return true;
}

void Session::ShowProgress(std::size_t index, double fraction) {
  if (!request_.goesOn) {
    return bar_.Show((static_cast<double>(index) + fraction) / static_cast<double>(sources_.size()));
  }
  // Nobody knows how far it is when only what is waited for ends it.
  if (end_ == Clock::time_point::max()) return;
  bar_.Show(std::chrono::duration<double>(Clock::now() - begin_) / (end_ - begin_));
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
  source.notes.gaps.push_back({outcome.lastKnownTicks, outcome.firstNewTicks});
  if (++source.losses > mostLossWarnings) return;
  bar_.Clear();
  const tasklog::Log& log = source.reader.Log();
  const auto& files = source.notes.files;
  const TimeFormat time(files.empty() ? log.StartTime() : files.front().period.start, log.TicksPerSecond());
  std::string where;
  // In a merged log the ends are those of all loggers together.
  if (time.HasSeconds() && !request_.merge) {
    where = fmt::format(" between {} s and {} s", time.Since(outcome.lastKnownTicks),
                        time.Since(outcome.firstNewTicks));
  }
  PrintWarning(source.reader.Description() + ": records were lost" + where +
               ", the buffer was overwritten between two reads (a shorter --every may help)");
}

void Session::NoteWhatWasSeen() {
  for (const tasklog::Log& log : logs_) {
    for (const auto& task : log.Categories({.types = TL_CATS_TASKS})) tasksSeen_.insert(task.Name());
    anyEntries_ = anyEntries_ || log.EntriesCount({.types = UINT64_MAX}) > 0;
    if (!request_.until) continue;
    for (std::string& name : request_.until->NamesIn(log)) awaitedSeen_.insert(std::move(name));
  }
}

void Session::WarnAboutResult() const {
  for (const Source& source : sources_) {
    if (source.losses <= mostLossWarnings) continue;
    PrintWarning(fmt::format("{}: records were lost {} times", source.reader.Description(), source.losses));
  }
  if (!anyEntries_) PrintWarning("no records were read; is the logger running? (--start starts it)");
  if (!request_.trigger.empty() && !tasksSeen_.contains(request_.trigger) && !tasksSeen_.empty()) {
    PrintWarning("the trigger task " + Quoted(request_.trigger) + " is none of the tasks seen" +
                 Suggestion(request_.trigger, {tasksSeen_.begin(), tasksSeen_.end()}));
  }
  if (request_.until && !recorder_.Notes().endedBy) {
    const bool known = awaitedSeen_.contains(request_.until->Name());
    PrintWarning(
        Quoted(request_.until->Selector()) + " did not happen" +
        (known ? "" : Suggestion(request_.until->Name(), {awaitedSeen_.begin(), awaitedSeen_.end()})));
  }
}

std::string Session::DescribedEnd() const {
  const auto& by = recorder_.Notes().endedBy;
  if (!by) return {};
  std::string where;
  for (const Source& source : sources_) {
    if (source.notes.name != by->logger) continue;
    const TimeFormat time(source.notes.files.front().period.start, source.notes.ticksPerSecond);
    where =
        fmt::format(" in {} at {}", by->logger,
                    time.HasSeconds() ? time.Since(by->ticks) + " s" : fmt::format("{} ticks", by->ticks));
  }
  return fmt::format("ended by {}{}\n", SafeText(by->what), where);
}

void Session::Save() {
  NoteWhatWasSeen();
  const std::string report = recorder_.SaveLast(logs_);
  WarnAboutResult();
  PrintReport(report + DescribedEnd());
}

}  // namespace

int Record(const RecordRequest& request) {
  WarnAboutSuffix(request.target, request.loggers);
  CatchStopSignals();
  Session session(request);
  if (request.start) session.StartLoggers();
  session.ReadUntilDone();
  session.Save();
  return session.ExitCode();
}

}  // namespace cli
