#include "record.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <thread>
#include <utility>

#include "cli/loggerreader.h"
#include "cli/recorder.h"
#include "failures.h"

namespace python {
namespace {

using Clock = std::chrono::steady_clock;

// Calls what may end a recording, at most this often.
class Check {
 public:
  explicit Check(const std::function<void()>& call) : call_(call) {}
  void operator()() {
    if (Clock::now() < next_) return;
    call_();
    next_ = Clock::now() + pause;
  }
  void WaitUntil(Clock::time_point time) {
    while (Clock::now() < time) {
      (*this)();
      std::this_thread::sleep_until(std::min(time, Clock::now() + pause));
    }
  }

 private:
  static constexpr std::chrono::milliseconds pause{50};

  const std::function<void()>& call_;
  Clock::time_point next_;
};

struct Source {
  cli::RecordedLogger& notes;
  std::shared_ptr<cli::LaneLog> loaded;
  cli::LoggerReader reader;
  bool warned = false;
};

void ReadOne(Source& source, Check& check) {
  const auto outcome = source.reader.Read([&](double) {
    check();
    return true;
  });
  const std::string reading = "reading " + source.reader.Description();
  if (!outcome.completed) throw cli::Failure(reading, outcome.status);
  ++source.notes.reads;
  if (outcome.lostRecords) source.notes.gaps.push_back({outcome.lastKnownTicks, outcome.firstNewTicks});
  if (outcome.status || std::exchange(source.warned, true)) return;
  cli::PrintWarning("the names of tasks and testpoints for " + source.reader.Description() + ": " +
                    cli::StatusText(outcome.status) + " (they are named by their ids)");
}

// Reads that take longer than the interval follow each other without a pause.
void ReadUntilDone(std::deque<Source>& sources, const RecordRequest& request, Check& check) {
  const Clock::time_point end = Clock::now() + request.duration;
  Clock::time_point next = Clock::now();
  for (;;) {
    const bool last = Clock::now() >= end;
    for (Source& source : sources) ReadOne(source, check);
    if (last) return;
    next = std::max(next + request.interval, Clock::now());
    check.WaitUntil(std::min(next, end));
  }
}

// What a reader of the saved files would find.
void Note(Source& source, const std::shared_ptr<const cli::Metadata>& metadata) {
  cli::LaneLog& loaded = *source.loaded;
  loaded.gaps = source.notes.gaps;
  loaded.switches = metadata->switches;
  loaded.idleTask = cli::IdleTaskOf(loaded.log, metadata->idleTask);
  loaded.metadata = metadata;
}

std::vector<Lane> RecordAll(const RecordRequest& request, const AnalysisOptions& options, Check& check) {
  const cli::LoggerChoice choice = cli::ParseLoggers(request.loggers);
  cli::WarnAboutSuffix(request.target, choice);
  const std::vector<cli::Logger> loggers = cli::ChosenLoggers(request.target, choice);
  const auto metadata = std::make_shared<cli::Metadata>(cli::FirstNotes(request.target, loggers, false));
  std::deque<Source> sources;
  for (std::size_t i = 0; i < loggers.size(); ++i) {
    const auto loaded = std::make_shared<cli::LaneLog>();
    sources.push_back(
        {metadata->loggers[i], loaded, cli::LoggerReader(request.target, loggers[i], loaded->log)});
  }
  if (request.start) cli::StartLoggers(request.target, loggers, request.trigger);
  ReadUntilDone(sources, request, check);
  metadata->endedAt = cli::NowUtc();
  const auto isEmpty = [](const Source& source) { return source.loaded->log.EntriesCount() == 0; };
  if (std::all_of(sources.begin(), sources.end(), isEmpty))
    cli::PrintWarning("no records were read; is the logger running? (start=True starts it)");
  std::vector<Lane> lanes;
  for (Source& source : sources) {
    source.notes.ticksPerSecond = source.loaded->log.TicksPerSecond();
    Note(source, metadata);
    const std::string& name = source.notes.name;
    lanes.emplace_back(cli::Lane{name, source.reader.Description()}, source.loaded, options);
  }
  return lanes;
}

}  // namespace

std::vector<Lane> Record(const RecordRequest& request, const AnalysisOptions& options,
                         const std::function<void()>& call) {
  Check check(call);
  return FailingAs("TargetError", [&] { return RecordAll(request, options, check); });
}

}  // namespace python
