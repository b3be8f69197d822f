// Saves a log and makes sure that the file holds it.
#pragma once

#include <cstdint>
#include <string>
#include <tasklog/tasklog.hpp>

#include "metadata.h"

namespace cli {

// What a saved file holds, as any reader will see it.
struct SavedFile {
  std::uint64_t entries;
  Period period;
  std::uint64_t ticksPerSecond;
  std::string notCarried;  // what the log has and the file has not: docs/cli.md; empty: nothing
};

// Saves `log` to `path` and reads it back: the library does not report what goes wrong when it closes the
// file. `shownPath` is what messages call it. Throws Failure.
SavedFile SaveChecked(const tasklog::Log& log, const std::string& path, const std::string& shownPath);

}  // namespace cli
