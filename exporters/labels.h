// What formats print for categories and types, made once instead of for each entry.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <tasklog/tasklog.hpp>
#include <utility>
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

// A text with room behind it, so that most are copied in pieces of one fixed size.
class PaddedText {
 public:
  static constexpr std::size_t slack = 32;

  PaddedText() : PaddedText(std::string()) {}
  explicit PaddedText(std::string text) : bytes_(std::move(text)) { bytes_.append(slack, '\0'); }

  std::size_t Size() const { return bytes_.size() - slack; }
  std::string_view View() const { return {bytes_.data(), Size()}; }
  // To where there is room for `slack` bytes more than the text has; returns what is behind the text.
  char* PutAt(char* at) const {
    std::memcpy(at, bytes_.data(), slack);
    if (Size() > slack) std::memcpy(at + slack, bytes_.data() + slack, Size() - slack);
    return at + Size();
  }

 private:
  std::string bytes_;
};

// A text for each category of some logs.
class Labels {
 public:
  template <class Render>
  Labels(const Logs& logs, std::string none, Render render) : none_(PaddedText(std::move(none))) {
    std::size_t count = 1;
    for (const tasklog::Log* log : logs) count += log->CategoriesCount();
    rows_.resize(2 * std::bit_ceil(count));
    for (const tasklog::Log* log : logs)
      for (const auto& category : log->Categories()) {
        Row& row = rows_[PlaceOf(category.Handle())];
        row = {category.Handle(), PaddedText(render(category))};
      }
  }
  std::string_view Of(TLEntry entry, std::uint32_t slot) const { return TextOf(entry, slot).View(); }
  const PaddedText& TextOf(TLEntry entry, std::uint32_t slot) const {
    const TLCategory category = TLEntryGetCategory(entry, slot);
    return category ? rows_[PlaceOf(category)].label : none_;
  }

 private:
  struct Row {
    TLCategory category = nullptr;
    PaddedText label = {};
  };

  // Its row, or the one for it: one probe, as a rule, for at least half of them are free.
  std::size_t PlaceOf(TLCategory category) const {
    const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(category));
    std::size_t place = static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15u) >> 32) & (rows_.size() - 1);
    while (rows_[place].category && rows_[place].category != category)
      place = (place + 1) & (rows_.size() - 1);
    return place;
  }

  PaddedText none_;
  std::vector<Row> rows_;  // a power of two
};

// A text for each type of entry. Types are four bits on the target.
class TypeLabels {
 public:
  template <class Render>
  explicit TypeLabels(Render render) {
    for (std::uint32_t type = 0; type < labels_.size(); ++type) labels_[type] = PaddedText(render(type));
  }
  std::string_view Of(TLEntry entry) const { return TextOf(entry).View(); }
  const PaddedText& TextOf(TLEntry entry) const { return labels_[TLEntryGetType(entry) % labels_.size()]; }

 private:
  std::array<PaddedText, 16> labels_;
};

}  // namespace exporters
