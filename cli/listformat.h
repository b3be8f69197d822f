// The formats of `tasklog list`. docs/cli.md, tasklog list, has their fields.
#pragma once

#include <fmt/format.h>

#include <memory>
#include <string>
#include <tasklog/tasklog.hpp>

namespace cli {

struct ListStyle {
  std::string format;   // "text", "csv" or "json"
  bool ticks = false;   // raw ticks in place of seconds
  bool colors = false;  // of text
};

// Formats the entries of one log, one after the other, and allocates nothing while it does.
class EntryFormat {
 public:
  virtual ~EntryFormat() = default;
  virtual void Begin(fmt::memory_buffer& out) = 0;
  virtual void Add(fmt::memory_buffer& out, const tasklog::Entry& entry) = 0;
  virtual void End(fmt::memory_buffer& out) = 0;
};

// `log` must outlive the format and stay as it is. Seconds are left out when its tick rate is unknown.
std::unique_ptr<EntryFormat> MakeEntryFormat(const tasklog::Log& log, const ListStyle& style);

}  // namespace cli
