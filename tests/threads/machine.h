// A simulated controller for several threads, and the threads.
#pragma once

#include <functional>

#include "support/dump.h"

// Runs `work` in several threads at once, each with its number from 0, and waits for all.
inline constexpr int threadCount = 4;
void InThreads(const std::function<void(int)>& work);

// A machine on the stepped clock: every read of a buffer moves its time on by 1 ms, in which kernel 1 adds
// four records. The scheduler's ring of 64 cells goes round, that of kernel 1 has room for all. Both loggers
// run.
class Machine {
 public:
  Machine();
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  const char* Target() const { return path_.c_str(); }
  std::uint32_t Append(TLTaskLog log, std::int32_t kernel, TLProgress progress = nullptr,
                       void* user = nullptr) const {
    return TLTaskLogAppendFromTarget(log, Target(), kernel, progress, user);
  }

 private:
  std::string path_;
};

inline constexpr std::int32_t scheduler = -1;
