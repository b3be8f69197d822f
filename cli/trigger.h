// What a recording waits for: the selector of --until.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

#include "args.h"
#include "metadata.h"

namespace cli {

class Trigger {
 public:
  // "issue:NAME", "testpoint:NAME", "event:TASK" or "response:TASK>TIME". Throws UsageError.
  explicit Trigger(const std::string& selector);

  const std::string& Selector() const { return selector_; }
  bool IsResponse() const { return limit_.has_value(); }

  // The time at which it first happened between two ticks, both included. A response that is longer than the
  // limit already counts, although its job is not complete. `notes` say what switches mean. Throws Failure
  // when the limit is no length in this log.
  std::optional<std::uint64_t> FirstIn(const tasklog::Log& log, std::uint64_t from, std::uint64_t to,
                                       const Metadata& notes) const;

  // The names in the log that the selector might have meant.
  std::vector<std::string> NamesIn(const tasklog::Log& log) const;
  const std::string& Name() const { return name_; }

 private:
  std::optional<std::uint64_t> FirstEntry(const tasklog::Log& log, std::uint64_t from,
                                          std::uint64_t to) const;
  std::uint64_t LimitTicks(const tasklog::Log& log) const;

  std::string selector_;
  std::string name_;
  std::uint64_t categories_ = 0;
  std::uint64_t entries_ = 0;
  std::optional<TimePoint> limit_;  // of a response
};

}  // namespace cli
