// Controllers and files as a fuzzer's bytes describe them.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "input.h"
#include "mirror.h"
#include "support/scriptedtarget.h"
#include "support/taskfile.h"

namespace fuzz {

// What a scripted target is given. It is put in force anew for each of two readers, so that both meet the
// same.
struct Controller {
  std::map<std::string, double> numbers;
  std::map<std::string, std::string> texts;
  std::vector<ScriptedTask> tasks;
  std::map<std::int64_t, std::vector<std::uint32_t>> memory;
  std::map<std::size_t, std::uint32_t> failingCalls;
  std::optional<std::size_t> changesAt;  // the call before which tasks and testpoints become others
  std::optional<std::uint32_t> listSizeBytes;
  std::size_t listPortions = SIZE_MAX;
  bool terminatesTexts = true;
  bool storesSizes = true;

  // What it is told to stays with a connection; the next one meets it as it was.
  Connect Line() const;
};

// The timer, the tasks, the testpoints, and what goes wrong; no logger yet.
Controller DecodeController(Input& input);

// Gives it the logger of a kernel (-1: the scheduler's) with a ring buffer, in place of the one it had.
void DecodeRing(Input& input, Controller& controller, std::int32_t kernel);

// A whole TaskLog file of a few sections with records that often share a time.
Bytes DecodeFile(Input& input);

}  // namespace fuzz
