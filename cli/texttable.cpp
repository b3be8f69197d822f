#include "texttable.h"

#include <algorithm>
#include <numeric>

#include "print.h"
#include "text.h"

namespace cli {
namespace {

constexpr std::size_t marginColumns = 2;    // before each line, and between columns
constexpr std::size_t shortestName = 8;     // names are not cut further
constexpr const char* ellipsis = "\u2026";  // one column
constexpr const char* red = "\x1b[31m";
constexpr const char* plain = "\x1b[0m";

// The first `columns` characters of UTF-8 text.
std::string_view FirstColumns(std::string_view utf8, std::size_t columns) {
  std::size_t at = 0;
  for (; at < utf8.size(); ++at) {
    const bool begins = (utf8[at] & 0xC0) != 0x80;
    if (begins && columns-- == 0) break;
  }
  return utf8.substr(0, at);
}

std::string Fitted(const std::string& name, std::size_t width) {
  const std::size_t columns = DisplayWidth(name);
  if (columns > width) return std::string(FirstColumns(name, width - 1)) + ellipsis;
  return name + std::string(width - columns, ' ');
}

}  // namespace

std::string Percent(double share) { return fmt::format("{:.2f} %", share * 100); }

void TextTable::Add(std::vector<std::string> cells, bool marked) {
  cells.front() = SafeText(cells.front());
  rows_.push_back({std::move(cells), marked});
}

std::vector<std::size_t> TextTable::Widths() const {
  std::vector<std::size_t> widths(rows_.front().cells.size());
  for (const Row& row : rows_) {
    for (std::size_t i = 0; i < widths.size(); ++i)
      widths[i] = std::max(widths[i], DisplayWidth(row.cells[i]));
  }
  const std::size_t numbers =
      std::accumulate(widths.begin() + 1, widths.end(), marginColumns * widths.size());
  const std::size_t left = widestLine - std::min(widestLine, numbers);
  widths.front() = std::min(widths.front(), std::max(left, shortestName));
  return widths;
}

void TextTable::Print(fmt::memory_buffer& out, bool colors) const {
  const std::vector<std::size_t> widths = Widths();
  for (const Row& row : rows_) {
    std::string line = row.marked ? "* " : "  ";
    line += Fitted(row.cells.front(), widths.front());
    for (std::size_t i = 1; i < widths.size(); ++i) {
      const std::string padding(widths[i] - DisplayWidth(row.cells[i]), ' ');
      const bool left = i < leftColumns_;
      line += std::string(marginColumns, ' ') + (left ? row.cells[i] + padding : padding + row.cells[i]);
    }
    line.resize(line.find_last_not_of(' ') + 1);
    const bool colored = row.marked && colors;
    cli::Print(out, "{}{}{}\n", colored ? red : "", line, colored ? plain : "");
  }
}

}  // namespace cli
