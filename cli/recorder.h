// Puts what was read into files: one for each logger, or one segment after the other, with the metadata.
#pragma once

#include <chrono>
#include <deque>
#include <optional>
#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

#include "metadata.h"
#include "recordingoutput.h"
#include "session.h"

namespace cli {

// What is known before the first read: the time, the target, and what its notes say (targetsfile.h).
Metadata FirstNotes(const std::string& target, const std::vector<Logger>& loggers, bool merged);

// "2024-05-31T12:34:56.789Z"
std::string NowUtc();

class Recorder {
 public:
  // Prepares the place. Throws Failure when something is in the way.
  Recorder(const RecordRequest& request, const std::vector<Logger>& loggers);

  std::size_t FileCount() const { return output_->Count(); }

  // What is to be noted: loggers in order, their reads and gaps; the files are added here.
  Metadata& Notes() { return metadata_; }
  const Metadata& Notes() const { return metadata_; }

  // Saves one log for each file; gives a line for each. Throws Failure.
  std::string SaveSegment(const std::deque<tasklog::Log>& logs);  // makes ready for the next one
  std::string SaveLast(const std::deque<tasklog::Log>& logs);

 private:
  using Clock = std::chrono::steady_clock;

  std::vector<std::string> FileNames() const;
  void OpenOutput();
  std::string Save(const std::deque<tasklog::Log>& logs);
  std::vector<std::string> TakeOldSegments();

  const RecordRequest& request_;
  const std::vector<Logger>& loggers_;
  Metadata metadata_;
  std::optional<RecordingOutput> output_;
  std::uint64_t segment_ = 1;
  std::deque<Clock::time_point> segmentEnds_;  // of those that are kept
};

}  // namespace cli
