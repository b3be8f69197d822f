#include "entriesaround.h"

#include <algorithm>

#include "listformat.h"

namespace cli {
namespace {

constexpr std::uint64_t beside = 3;  // entries on each side
constexpr std::uint64_t mostFirst = 10;
constexpr std::uint64_t mostLast = 5;

// The latest time with `beside` entries from it to `from`, `from` left out.
std::uint64_t TimeBefore(const tasklog::Log& log, std::uint64_t from) {
  std::uint64_t low = std::min(log.StartTime(), from);
  std::uint64_t high = from;
  while (low < high) {
    const std::uint64_t middle = low + (high - low + 1) / 2;
    const bool enough = middle < from && log.EntriesCount({.from = middle, .to = from - 1}) >= beside;
    enough ? low = middle : high = middle - 1;
  }
  return low;
}

// The earliest time with `beside` entries from `to`, left out, to it.
std::uint64_t TimeBehind(const tasklog::Log& log, std::uint64_t to) {
  std::uint64_t low = to;
  std::uint64_t high = std::max(log.StopTime(), to);
  while (low < high) {
    const std::uint64_t middle = low + (high - low) / 2;
    const bool enough = middle > to && log.EntriesCount({.from = to + 1, .to = middle}) >= beside;
    enough ? high = middle : low = middle + 1;
  }
  return low;
}

void AppendIndented(std::string& text, const fmt::memory_buffer& line, const std::string& indent) {
  text += indent;
  text.append(line.data(), line.size());
}

}  // namespace

std::string EntriesAround(const tasklog::Log& log, std::uint64_t from, std::uint64_t to,
                          const std::string& indent) {
  const std::uint64_t first = TimeBefore(log, from);
  const std::uint64_t last = TimeBehind(log, to);
  const std::uint64_t count = log.EntriesCount({.from = first, .to = last});
  const bool leavesOut = count > mostFirst + mostLast + 1;
  const auto format = MakeEntryFormat(log, {.format = "text"});
  std::string text;
  fmt::memory_buffer line;
  format->Begin(line);
  AppendIndented(text, line, indent);
  std::uint64_t at = 0;
  for (const auto& entry : log.Entries({.from = first, .to = last})) {
    const bool isLast = count - at <= mostLast;
    if (leavesOut && at == mostFirst)
      text += fmt::format("{}... {} more\n", indent, count - mostFirst - mostLast);
    ++at;
    if (leavesOut && at > mostFirst && !isLast) continue;
    line.clear();
    format->Add(line, entry);
    AppendIndented(text, line, indent);
  }
  return text;
}

}  // namespace cli
