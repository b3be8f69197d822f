// What is known of a target beside what its loggers say: targets.toml, docs/recording.md.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace cli {

struct TargetNotes {
  std::string switches;      // what types of switches mean, as --switches takes it; empty: unknown
  std::string idleTask;      // its name or a shell pattern; empty: unknown
  std::int64_t kernels = 0;  // those whose loggers are offered where --logger is typed: 1 to this
};

// Looks the target up in the files of the user, of the system, and beside the target-access library in use;
// the first one that has it decides. A mistake in a file is one warning, and the file is passed over.
TargetNotes NotesOn(const std::string& target);

// The names in all files that are no patterns.
std::vector<std::string> TargetNames();

}  // namespace cli
