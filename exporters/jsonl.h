// JSON lines: an object for each entry. docs/export.md, CSV and JSON lines, has the keys.
#pragma once

#include "csv.h"

namespace exporters {

// Formats objects, and allocates nothing while it does. The logs are borrowed.
class JsonRows {
 public:
  JsonRows(const Logs& logs, const RowStyle& style);

  // One object; what separates it from the next is up to the caller.
  void Add(fmt::memory_buffer& out, TLEntry entry) const;
  // An object that is no entry: its type alone.
  void Add(fmt::memory_buffer& out, std::uint64_t ticks, std::string_view type) const;

 private:
  void AppendTime(fmt::memory_buffer& out, std::uint64_t ticks) const;

  TimeFormat time_;
  bool seconds_;
  std::string lane_;
  TypeLabels types_;
  Labels subjects_;
  Labels running_;
};

std::unique_ptr<Exporter> MakeJsonLines(Files& files);

}  // namespace exporters
