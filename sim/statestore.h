// What a controller on the wall clock remembers from one process to the next: when it was switched on and
// which loggers were started when. A small text file in a folder of the user's; docs/scenarios.md says where.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "scenario.h"

namespace sim {

struct StartedLogger {
  int number = 0;        // as ProcessorSpec::number
  uint64_t startNs = 0;  // after power-on
  std::string trigger;   // empty: none
};

struct RunState {
  uint64_t powerOnNs = 0;  // on the wall clock
  uint64_t contactNs = 0;  // latest known contact
  std::vector<StartedLogger> loggers;
};

// While this lives no other process that uses the store comes between a Load() and the Save() behind it.
class StateLock {
 public:
  // Without a folder nothing is locked.
  explicit StateLock(const std::string& folder);
  ~StateLock();
  StateLock(const StateLock&) = delete;
  StateLock& operator=(const StateLock&) = delete;

 private:
  int fd_ = -1;
};

class StateStore {
 public:
  // Keeps nothing.
  StateStore() = default;
  explicit StateStore(std::string path) : path_(std::move(path)) {}

  // The store of a scenario; one that keeps nothing when there is no folder to keep it in.
  static StateStore For(const Scenario& scenario);

  StateLock Lock() const;

  // Nothing when there is no file, or when it is not one of ours.
  std::optional<RunState> Load() const;
  // Replaces the file as a whole. Failing to is no error: the next process then meets a fresh controller.
  void Save(const RunState& state) const;

 private:
  std::string path_;
};

}  // namespace sim
