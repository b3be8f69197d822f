// The formats of `tasklog list`. docs/cli.md, tasklog list, has their fields.
#pragma once

#include <fmt/format.h>

#include <memory>
#include <string>
#include <tasklog/tasklog.hpp>

namespace cli {

struct ListStyle {
  std::string format;     // "text", "csv" or "json"
  bool ticks = false;     // raw ticks in place of seconds
  bool colors = false;    // of text
  std::string lane = {};  // of several, in CSV and JSON; empty: there is only one
  // Lanes were listed before this one, and entries of them.
  bool continues = false;
  bool continuesEntries = false;
};

// Formats the entries of one log, one after the other, and allocates nothing while it does. Each lane begins,
// the last one ends.
class EntryFormat {
 public:
  virtual ~EntryFormat() = default;
  virtual void Begin(fmt::memory_buffer& out) = 0;
  virtual void Add(fmt::memory_buffer& out, const tasklog::Entry& entry) = 0;
  virtual void End(fmt::memory_buffer& out) = 0;
};

// `log` must stay as it is while entries are added. Seconds are left out when its tick rate is unknown.
std::unique_ptr<EntryFormat> MakeEntryFormat(const tasklog::Log& log, const ListStyle& style);

}  // namespace cli
