// What formats print for categories and types, made once instead of for each entry.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

#include "analysis/lane.h"

namespace exporters {

// "switch", "event", "testpoint" or "issue".
inline const char* TypeName(ETLLogType type) {
  switch (type) {
    case TLLogTaskEvent: return "event";
    case TLLogTestpoint: return "testpoint";
    case TLLogTimingIssue: return "issue";
    default: return "switch";
  }
}

using Logs = std::vector<const tasklog::Log*>;

inline Logs LogsOf(const analysis::Lane& lane) {
  Logs logs;
  for (const analysis::Lane::Segment& segment : lane.Segments()) logs.push_back(segment.log);
  return logs;
}

// A text for each category of some logs.
class Labels {
 public:
  template <class Render>
  Labels(const Logs& logs, std::string none, Render render) : none_(std::move(none)) {
    std::size_t count = 1;
    for (const tasklog::Log* log : logs) count += log->CategoriesCount();
    rows_.resize(2 * std::bit_ceil(count));
    for (const tasklog::Log* log : logs)
      for (const auto& category : log->Categories()) {
        Row& row = rows_[PlaceOf(category.Handle())];
        row = {category.Handle(), render(category)};
      }
  }
  const std::string& Of(TLEntry entry, std::uint32_t slot) const {
    const TLCategory category = TLEntryGetCategory(entry, slot);
    return category ? rows_[PlaceOf(category)].label : none_;
  }

 private:
  struct Row {
    TLCategory category = nullptr;
    std::string label = {};
  };

  // Its row, or the one for it: one probe, as a rule, for at least half of them are free.
  std::size_t PlaceOf(TLCategory category) const {
    const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(category));
    std::size_t place = static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15u) >> 32) & (rows_.size() - 1);
    while (rows_[place].category && rows_[place].category != category)
      place = (place + 1) & (rows_.size() - 1);
    return place;
  }

  std::string none_;
  std::vector<Row> rows_;  // a power of two
};

// A text for each type of entry. Types are four bits on the target.
class TypeLabels {
 public:
  template <class Render>
  explicit TypeLabels(Render render) {
    for (std::uint32_t type = 0; type < labels_.size(); ++type) labels_[type] = render(type);
  }
  const std::string& Of(TLEntry entry) const { return labels_[TLEntryGetType(entry) % labels_.size()]; }

 private:
  std::array<std::string, 16> labels_;
};

}  // namespace exporters
