// Fills logs from files and controllers that a test makes up, and saves them, all through the exports.
#pragma once

#include <gtest/gtest.h>

#include "support/dump.h"
#include "support/ring.h"
#include "support/taskfile.h"

// Appends the scheduler's buffer of a controller that is already scripted otherwise.
inline std::uint32_t AppendRing(TLTaskLog log, ScriptedTarget& target,
                                const std::vector<std::uint32_t>& words) {
  PutLogger(target, "Scheduler.Logger", words);
  return TLTaskLogAppendFromTarget(log, "ctl", -1, nullptr, nullptr);
}

// The same from a controller with the categories of PutCategories().
inline std::uint32_t AppendRing(TLTaskLog log, const std::vector<std::uint32_t>& words) {
  ScriptedTarget target;
  PutCategories(target);
  return AppendRing(log, target, words);
}

inline std::uint32_t AppendBytes(TLTaskLog log, const Bytes& bytes) {
  const TempFile file(bytes);
  return TLTaskLogAppendFromFile(log, file.CPath());
}

// A log with one entry, a plain switch to the task File at 500, and the period 400 to 600 at 50 Hz.
inline LogPtr NewLogWithEntry() {
  LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({.startTime = 400, .stopTime = 600, .tickRate = 50},
                                            {{"File", 1, 2, {{2, 0, 500}}}})),
            0u);
  return log;
}

inline Bytes Save(TLTaskLog log) {
  const TempFile file;
  EXPECT_EQ(TLTaskLogSaveAsFile(log, file.CPath()), 0u);
  return ReadBytes(file.Path());
}
