// What a recording waits for: the selector of --until.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

namespace cli {

class Trigger {
 public:
  // "issue:NAME", "testpoint:NAME" or "event:TASK". Throws UsageError.
  explicit Trigger(const std::string& selector);

  const std::string& Selector() const { return selector_; }

  // The time of the first such entry between two ticks, both included.
  std::optional<std::uint64_t> FirstIn(const tasklog::Log& log, std::uint64_t from, std::uint64_t to) const;

  // The names in the log that the selector might have meant.
  std::vector<std::string> NamesIn(const tasklog::Log& log) const;
  const std::string& Name() const { return name_; }

 private:
  std::string selector_;
  std::string name_;
  std::uint64_t categories_ = 0;
  std::uint64_t entries_ = 0;
};

}  // namespace cli
