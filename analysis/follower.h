// Follows a logger from read to read. Each read is a log of its own, with all that the buffer held; two of
// them are kept, and of all before only sums are. Memory: two logs and a constant a task, however long it is
// followed.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <tasklog/tasklog.hpp>

#include "meanings.h"
#include "tally.h"

namespace analysis {

struct TaskOrder {
  bool operator()(const Task& a, const Task& b) const;
};

// What is known of a task; `isIdle` of the last read that has it.
struct FollowedTask {
  TaskTally last;  // since the read before
  TaskTally all;   // since the first
  bool isIdle = false;
  std::uint64_t seenInRead = 0;
};

class Follower {
 public:
  using Tasks = std::map<Task, FollowedTask, TaskOrder>;

  // `idlePattern`: a shell pattern; empty, or when no task matches: by name, as FindIdleTask() does.
  Follower(const Meanings& meanings, std::string idlePattern);

  // Takes the next read. It is read together with the one before, so a job counts in the read in which it
  // ends, whichever it began in, as long as the buffer of the read before still held its beginning. The last
  // tick of a read may lack records, so it counts with the next, be it that nothing came behind it.
  void Take(tasklog::Log log);

  const Tasks& All() const { return tasks_; }
  const LaneTally& Last() const { return last_; }
  const LaneTally& Total() const { return total_; }
  std::uint64_t TicksPerSecond() const { return ticksPerSecond_; }  // 0: unknown
  Ticks StartTime() const { return start_; }                        // of the first read that held records
  Ticks StopTime() const { return stop_; }                          // of the last one
  bool HasRecords() const { return before_.has_value(); }

 private:
  TaskIndex IdleTaskOf(const Lane& lane) const;
  void Count(const Lane& lane, Ticks to);
  void ForgetTasks(std::size_t most);

  Meanings meanings_;
  std::string idlePattern_;
  std::optional<tasklog::Log> before_;
  Ticks next_ = 0;  // all before is counted
  Ticks start_ = 0;
  Ticks stop_ = 0;
  std::uint64_t ticksPerSecond_ = 0;
  std::uint64_t reads_ = 0;
  LaneTally last_;
  LaneTally total_;
  Tasks tasks_;
};

}  // namespace analysis
