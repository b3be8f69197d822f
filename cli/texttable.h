// Tables for people: columns as wide as what is in them, lines of at most 100 columns.
#pragma once

#include <fmt/format.h>

#include <string>
#include <vector>

namespace cli {

// "-" stands for what is not there.
inline const std::string noValue = "-";

// The share in percent, two decimals: "43.20 %".
std::string Percent(double share);

// The first column holds names; those behind the `leftColumns` hold numbers, aligned to the right. When lines
// would get too long, names are cut and end in an ellipsis.
class TextTable {
 public:
  static constexpr std::size_t widestLine = 100;

  explicit TextTable(std::vector<std::string> headings, std::size_t leftColumns = 1)
      : rows_{{std::move(headings), false}}, leftColumns_(leftColumns) {}

  // Also a second row of headings. As many cells as there are headings. The name may hold any bytes. A marked
  // row begins with '*', and is red where there are colours.
  void Add(std::vector<std::string> cells, bool marked = false);
  void Print(fmt::memory_buffer& out, bool colors) const;

 private:
  struct Row {
    std::vector<std::string> cells;
    bool marked;
  };

  std::vector<std::size_t> Widths() const;

  std::vector<Row> rows_;    // headings first
  std::size_t leftColumns_;  // aligned to the left, the one of names included
};

}  // namespace cli
