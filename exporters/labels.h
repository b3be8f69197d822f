// What formats print for categories and types, made once instead of for each entry.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <tasklog/tasklog.hpp>
#include <unordered_map>
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
    for (const tasklog::Log* log : logs)
      for (const auto& category : log->Categories()) labels_.try_emplace(category.Handle(), render(category));
  }
  const std::string& Of(TLEntry entry, std::uint32_t slot) const {
    const TLCategory category = TLEntryGetCategory(entry, slot);
    return category ? labels_.find(category)->second : none_;
  }

 private:
  std::string none_;
  std::unordered_map<TLCategory, std::string> labels_;
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
