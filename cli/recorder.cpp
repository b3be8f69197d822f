#include "recorder.h"

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>

#include "failure.h"
#include "recording.h"
#include "savedfile.h"
#include "segments.h"
#include "targetsfile.h"
#include "text.h"
#include "timeformat.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

bool GoesIntoFolder(const RecordRequest& request) {
  const bool several = request.loggers.all || request.loggers.loggers.size() > 1;
  return request.split.count() > 0 || (several && !request.merge);
}

// Segments of two recordings in one folder could not be told apart.
void RefuseOldSegments(const std::string& folder, const std::vector<Logger>& loggers) {
  std::set<std::string> old;
  std::error_code error;
  for (const auto& item : fs::directory_iterator(folder, error)) {
    const std::string name = item.path().filename().string();
    const auto isOf = [&](const Logger& logger) { return logger.Name() == StemOf(name); };
    if (SegmentNumber(name) && std::any_of(loggers.begin(), loggers.end(), isOf)) old.insert(name);
  }
  if (old.empty()) return;
  throw Failure(fmt::format("writing {}: {} is of an earlier recording; remove it or write elsewhere",
                            Quoted(folder), Quoted(*old.begin())));
}

// Segments appear one by one, so their folder is there from the beginning.
void MakeFolder(const std::string& folder) {
  constexpr mode_t anyNewFolder = 0777;
  if (::mkdir(ResolvedPlace(folder).c_str(), anyNewFolder) == 0 || errno == EEXIST) return;
  throw Failure::System("creating the folder " + Quoted(folder), errno);
}

std::string Described(const SavedFile& saved) {
  const TimeFormat time(0, saved.ticksPerSecond);
  const std::string count = fmt::format("{} {}", saved.entries, saved.entries == 1 ? "entry" : "entries");
  if (saved.entries == 0 || !time.HasSeconds()) return count;
  return count + " over " + time.Length(saved.period.stop - saved.period.start) + " s";
}

}  // namespace

Metadata FirstNotes(const std::string& target, const std::vector<Logger>& loggers, bool merged) {
  const TargetNotes notes = NotesOn(WithoutKernelSuffix(target));
  Metadata metadata{.tool = "tasklog " TASKLOG_VERSION,
                    .target = target,
                    .startedAt = NowUtc(),
                    .endedAt = {},
                    .switches = notes.switches,
                    .idleTask = notes.idleTask,
                    .merged = merged,
                    .endedBy = {},
                    .loggers = {}};
  for (const Logger logger : loggers) metadata.loggers.push_back({.name = logger.Name()});
  return metadata;
}

std::string NowUtc() {
  const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
  const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
  return fmt::format("{:%FT%T}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(seconds)),
                     (now - seconds).count());
}

Recorder::Recorder(const RecordRequest& request, const std::vector<Logger>& loggers)
    : request_(request), loggers_(loggers), metadata_(FirstNotes(request.target, loggers, request.merge)) {
  if (request.split.count() > 0) {
    RefuseOldSegments(request.path, loggers);
    MakeFolder(request.path);
  }
  OpenOutput();
}

std::vector<std::string> Recorder::FileNames() const {
  if (!GoesIntoFolder(request_)) return {fs::path(request_.path).filename().string()};
  std::vector<std::string> names;
  for (const Logger logger : loggers_) {
    names.push_back(request_.split.count() > 0 ? SegmentName(logger.Name(), segment_) : logger.FileName());
  }
  return names;
}

void Recorder::OpenOutput() {
  output_.emplace(GoesIntoFolder(request_) ? RecordingOutput::Folder(request_.path, FileNames())
                                           : RecordingOutput::File(request_.path));
}

std::string Recorder::Save(const std::deque<tasklog::Log>& logs) {
  std::string report;
  const std::vector<std::string> names = FileNames();
  std::vector<std::string> warnings;
  for (std::size_t i = 0; i < logs.size(); ++i) {
    const std::string& shownPath = output_->ShownPath(i);
    const SavedFile saved = SaveChecked(logs[i], output_->SavePath(i), shownPath);
    report += fmt::format("{}: {}\n", SafeText(shownPath), Described(saved));
    if (!saved.notCarried.empty()) {
      warnings.push_back(Quoted(shownPath) + ": a TaskLog file cannot carry " + saved.notCarried);
    }
    for (std::size_t logger = 0; logger < loggers_.size(); ++logger) {
      if (!request_.merge && logger != i) continue;
      metadata_.loggers[logger].files.push_back({names[i], saved.period});
      metadata_.loggers[logger].ticksPerSecond = saved.ticksPerSecond;
    }
  }
  metadata_.endedAt = NowUtc();
  // Of segments nothing that is there may be missing in the metadata when the power goes.
  const bool split = request_.split.count() > 0;
  output_->Commit(ToJson(metadata_),
                  split ? RecordingOutput::MetadataComes::first : RecordingOutput::MetadataComes::last);
  for (const std::string& warning : warnings) PrintWarning(warning);
  return report;
}

std::string Recorder::SaveSegment(const std::deque<tasklog::Log>& logs) {
  std::string report = SaveLast(logs);
  segmentEnds_.push_back(Clock::now());
  ++segment_;
  OpenOutput();
  return report;
}

// Old segments go when the new ones are there, so a recording that is killed in between has too many rather
// than too few.
std::string Recorder::SaveLast(const std::deque<tasklog::Log>& logs) {
  const std::vector<std::string> old = TakeOldSegments();
  std::string report = Save(logs);
  for (const std::string& path : old) {
    if (::unlink(path.c_str()) == 0 || errno == ENOENT) continue;
    PrintWarning(Failure::System("removing " + Quoted(path), errno).what());
  }
  return report;
}

// Takes them out of the metadata.
std::vector<std::string> Recorder::TakeOldSegments() {
  std::vector<std::string> old;
  if (request_.keep.count() == 0) return old;
  for (; !segmentEnds_.empty() && segmentEnds_.front() < Clock::now() - request_.keep;
       segmentEnds_.pop_front()) {
    for (RecordedLogger& logger : metadata_.loggers) {
      old.push_back((fs::path(request_.path) / logger.files.front().name).string());
      logger.files.erase(logger.files.begin());
      const std::uint64_t start = logger.files.empty() ? 0 : logger.files.front().period.start;
      std::erase_if(logger.gaps, [start](const Gap& gap) { return gap.to <= start; });
    }
  }
  return old;
}

}  // namespace cli
