// What `tasklog top` shows, as lines: a head for each logger, and a table of its tasks.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "topreader.h"

namespace cli {

// The columns of the table; "all" columns are since the first read, the others since the read before.
enum class TopColumn : std::uint8_t {
  priority,
  load,
  loadAll,
  jobs,
  jobsAll,
  response,
  responseAll,
  issues,
  issuesAll,
  name
};
inline constexpr std::size_t topColumnCount = 10;
const std::vector<std::string>& TopColumnNames();  // as --sort takes them

struct TopOrder {
  TopColumn column = TopColumn::priority;
  bool reversed = false;  // otherwise numbers from the largest, names from A
};

struct TopLine {
  enum class Kind : std::uint8_t { plain, logger, headings, alert };
  std::string text;
  Kind kind = Kind::plain;
};

class TopTable {
 public:
  // What the loggers have come to; later reads change nothing of it.
  void Take(const std::deque<TopLogger>& loggers);
  // Safe to print; without trailing line breaks.
  std::vector<TopLine> Lines(const TopOrder& order);

 private:
  struct Row {
    analysis::Task task;
    analysis::FollowedTask values;
  };
  struct Block {
    std::vector<TopLine> head;
    std::vector<Row> rows;
    analysis::LaneTally last;
    analysis::LaneTally all;
    std::uint64_t ticksPerSecond;
  };
  using Cells = std::vector<std::string>;

  static Block BlockOf(const TopLogger& logger);
  static std::optional<double> ValueIn(const Block& block, const Row& row, TopColumn column);
  static void Sort(Block& block, const TopOrder& order);
  static Cells CellsOf(const Block& block, const Row& row);
  std::string Line(const Cells& cells);

  std::vector<Block> blocks_;
  std::vector<std::size_t> widths_ = {4, 5, 5, 4, 6, 8, 8, 6, 4, 0};  // they only grow, so nothing jumps
};

}  // namespace cli
