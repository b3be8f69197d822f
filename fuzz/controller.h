// Controllers as a fuzzer's bytes describe them.
#pragma once

#include <cstdint>
#include <map>

#include "input.h"
#include "support/scriptedtarget.h"

namespace fuzz {

// Where in the input a controller is described: it is decoded anew into each target that is to follow it, but
// for the loggers that are not asked for. The input must outlive it.
class Controller {
 public:
  // The timer, the tasks, the testpoints, and what goes wrong.
  void TakeMachine(Input& input);
  // The logger of a kernel (-1: the scheduler's) with a ring buffer, in place of the one it had.
  void TakeLogger(Input& input, std::int32_t kernel);

  // With that logger, or with none where there is none of that kernel.
  void Describe(ScriptedTarget& target, std::int32_t kernel) const;

 private:
  Input machine_{nullptr, 0};
  std::map<std::int32_t, Input> loggers_;
};

}  // namespace fuzz
