// Reads TaskLog files, and counts what a log holds.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

namespace cli {

inline constexpr std::size_t entryTypeCount = 8;  // those that a TaskLog file can hold
inline constexpr std::size_t categoryKindCount = 3;

struct CategorySummary {
  tasklog::Category category;
  std::uint64_t entries = 0;  // those that are about it
};

struct LogSummary {
  std::array<std::uint64_t, entryTypeCount> entriesByType{};
  std::array<std::uint64_t, categoryKindCount> categoriesByKind{};
  std::uint64_t entries = 0;
  std::vector<CategorySummary> categories;  // in the order of the log
};

LogSummary Summarize(const tasklog::Log& log);

// Adds the file at `path`, which messages call `shownPath`. Throws Failure, with what the system says when
// the file cannot be opened.
void LoadInto(tasklog::Log& log, const std::string& path, const std::string& shownPath);

}  // namespace cli
