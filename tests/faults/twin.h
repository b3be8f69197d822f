// The library and the plain model of it, led through the same faults: whatever goes wrong, both must give the
// same status and keep the same state.
#pragma once

#include <functional>
#include <string>

#include "support/dump.h"
#include "support/plainlog.h"
#include "support/scriptedtarget.h"

// Expects that the counts which a log keeps are those of what it yields, and that entries lie in time order.
void ExpectSound(TLTaskLog log);

class Twin {
 public:
  // Appends the buffer of kernel 1 of a target that `script` sets up, once for each of the two.
  std::uint32_t AppendFromTarget(const std::function<void(ScriptedTarget&)>& script);
  std::uint32_t AppendFromFile(const char* path);

  TLTaskLog Log() const { return library_.get(); }

 private:
  void ExpectSame(std::uint32_t status, std::uint32_t modelStatus) const;

  LogPtr library_ = NewLog();
  plain::Log model_;
};
