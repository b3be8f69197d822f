// CSV as RFC 4180 has it: a row for each entry. docs/export.md, CSV and JSON lines, has the columns.
#pragma once

#include <fmt/format.h>

#include <string>

#include "exporter.h"
#include "labels.h"
#include "timeformat.h"

namespace exporters {

// How rows are written, of CSV and of JSON.
struct RowStyle {
  TimeFormat time;
  bool seconds = true;
  std::string lane = {};  // of several; empty: there is only one
};

inline RowStyle RowStyleOf(const Source& source) {
  return {TimeFormat(source.start, source.lane.TicksPerSecond()), true,
          source.isOneOfSeveral ? source.name : ""};
}

// Formats rows, and allocates nothing while it does. The logs are borrowed.
class CsvRows {
 public:
  CsvRows(const Logs& logs, const RowStyle& style);

  void Header(fmt::memory_buffer& out) const;
  void Add(fmt::memory_buffer& out, TLEntry entry) const;
  // A row that is no entry: its type alone.
  void Add(fmt::memory_buffer& out, std::uint64_t ticks, std::string_view type) const;

 private:
  char* PutTime(char* at, std::uint64_t ticks) const;

  TimeFormat time_;
  bool seconds_;
  std::string_view laneHeader_;
  std::string lane_;
  TypeLabels types_;
  Labels subjects_;
  Labels running_;  // and the end of the row
};

std::unique_ptr<Exporter> MakeCsv(Files& files);

}  // namespace exporters
