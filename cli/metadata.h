// What `record` writes beside the files of a recording, as JSON. docs/recording.md has the keys.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace cli {

// Records were lost between these ticks; the records at both ends are there.
struct Gap {
  std::uint64_t from = 0;
  std::uint64_t to = 0;

  bool operator==(const Gap&) const = default;
};

// The period that a log or a file covers, in ticks.
struct Period {
  std::uint64_t start = 0;
  std::uint64_t stop = 0;

  bool operator==(const Period&) const = default;
};

struct RecordedFile {
  std::string name;  // without a folder
  Period period;
};

struct RecordedLogger {
  std::string name;                      // "scheduler", "kernel1", ...
  std::vector<RecordedFile> files = {};  // in order; several where the recording was split
  std::uint64_t ticksPerSecond = 0;      // 0: unknown
  std::uint64_t reads = 0;
  std::vector<Gap> gaps = {};  // in order
};

// What ended a recording before its time.
struct Happening {
  std::string what;    // the selector of --until, or "SIGUSR1"
  std::string logger;  // which recorded it; empty for a signal
  std::uint64_t ticks = 0;
};

struct Metadata {
  std::string tool;  // "tasklog 0.1.0"
  std::string target;
  std::string startedAt;  // UTC, "2024-05-31T12:34:56.789Z"
  std::string endedAt;
  std::string switches;  // what types of switches mean, as --switches takes it; empty: unknown
  std::string idleTask;  // its name or a shell pattern; empty: unknown
  bool merged = false;   // all loggers are in one file
  std::optional<Happening> endedBy;
  std::vector<RecordedLogger> loggers;
};

std::string ToJson(const Metadata& metadata);

// Throws std::runtime_error that says what is wrong.
Metadata ParseMetadata(const std::string& json);

// Whether it is metadata, of whatever version.
bool LooksLikeMetadata(const std::string& json);

}  // namespace cli
