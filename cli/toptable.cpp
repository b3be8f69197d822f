#include "toptable.h"

#include <fmt/format.h>

#include <algorithm>

#include "text.h"
#include "texttable.h"
#include "timeformat.h"

namespace cli {
namespace {

using analysis::FollowedTask;
using analysis::LaneTally;
using analysis::TaskTally;
using Kind = TopLine::Kind;

std::string PercentOrNone(const std::optional<double>& share) { return share ? Percent(*share) : noValue; }

// Seconds where the tick rate is known.
std::string LengthText(std::uint64_t ticks, std::uint64_t ticksPerSecond) {
  const TimeFormat time(0, ticksPerSecond);
  return time.HasSeconds() ? time.Length(ticks) + " s" : fmt::format("{} ticks", ticks);
}

std::string LossText(const TopLogger& logger) {
  const analysis::Follower& follower = logger.follower;
  const TimeFormat time(follower.StartTime(), follower.TicksPerSecond());
  const auto at = [&](std::uint64_t ticks) {
    return time.HasSeconds() ? time.Since(ticks) + " s" : fmt::format("{} ticks", ticks);
  };
  return fmt::format("  records were lost {}, last between {} and {} (a shorter --every may help)",
                     logger.losses == 1 ? "once" : fmt::format("{} times", logger.losses),
                     at(logger.lastLoss->from), at(logger.lastLoss->to));
}

std::vector<TopLine> HeadOf(const TopLogger& logger) {
  const analysis::Follower& follower = logger.follower;
  const LaneTally& last = follower.Last();
  const LaneTally& all = follower.Total();
  std::vector<TopLine> lines;
  if (!follower.HasRecords()) {
    lines.push_back({logger.name + "  no records so far; is the logger running? (--start starts it)",
                     logger.reads > 1 ? Kind::alert : Kind::logger});
  } else {
    std::uint64_t cut = 0;
    for (const auto& [task, values] : follower.All()) cut += values.all.cut;
    lines.push_back(
        {fmt::format("{}  busy {}, all {}  issues {}, all {}  cut jobs {}  known {}, all {}", logger.name,
                     PercentOrNone(last.Busy()), PercentOrNone(all.Busy()), last.issues, all.issues, cut,
                     LengthText(last.knownTicks, follower.TicksPerSecond()),
                     LengthText(all.knownTicks, follower.TicksPerSecond())),
         Kind::logger});
  }
  if (logger.losses > 0) lines.push_back({LossText(logger), Kind::alert});
  if (!logger.note.empty()) lines.push_back({"  " + logger.note, Kind::alert});
  return lines;
}

std::string LoadText(const std::optional<double>& share) {
  return share ? fmt::format("{:.2f}", *share * 100) : noValue;
}

std::string ResponseText(const TaskTally& tally, std::uint64_t ticksPerSecond) {
  if (tally.jobs == 0) return noValue;
  const TimeFormat time(0, ticksPerSecond);
  return time.HasSeconds() ? time.Length(tally.worstResponse) : std::to_string(tally.worstResponse);
}

std::optional<double> ResponseOf(const TaskTally& tally) {
  if (tally.jobs == 0) return std::nullopt;
  return static_cast<double>(tally.worstResponse);
}

}  // namespace

const std::vector<std::string>& TopColumnNames() {
  static const std::vector<std::string> names = {"priority",   "load",     "load-all",     "jobs",
                                                 "jobs-all",   "response", "response-all", "issues",
                                                 "issues-all", "name"};
  return names;
}

void TopTable::Take(const std::deque<TopLogger>& loggers) {
  blocks_.clear();
  for (const TopLogger& logger : loggers) blocks_.push_back(BlockOf(logger));
}

TopTable::Block TopTable::BlockOf(const TopLogger& logger) {
  const analysis::Follower& follower = logger.follower;
  Block block{HeadOf(logger), {}, follower.Last(), follower.Total(), follower.TicksPerSecond()};
  for (const auto& [task, values] : follower.All()) {
    if (!values.all.IsEmpty()) block.rows.push_back({task, values});
  }
  return block;
}

// Of the name nothing: it decides where all else is equal.
std::optional<double> TopTable::ValueIn(const Block& block, const Row& row, TopColumn column) {
  const TaskTally& last = row.values.last;
  const TaskTally& all = row.values.all;
  switch (column) {
    case TopColumn::priority: return row.task.priority;
    case TopColumn::load: return block.last.LoadOf(last);
    case TopColumn::loadAll: return block.all.LoadOf(all);
    case TopColumn::jobs: return static_cast<double>(last.jobs);
    case TopColumn::jobsAll: return static_cast<double>(all.jobs);
    case TopColumn::response: return ResponseOf(last);
    case TopColumn::responseAll: return ResponseOf(all);
    case TopColumn::issues: return static_cast<double>(last.issues);
    case TopColumn::issuesAll: return static_cast<double>(all.issues);
    case TopColumn::name: return std::nullopt;
  }
  return std::nullopt;
}

// A task without a value comes last, whichever the direction.
void TopTable::Sort(Block& block, const TopOrder& order) {
  const auto comesFirst = [&](const Row& a, const Row& b) {
    const auto left = ValueIn(block, a, order.column);
    const auto right = ValueIn(block, b, order.column);
    if (left.has_value() != right.has_value()) return left.has_value();
    if (left != right) return order.reversed ? *left < *right : *left > *right;
    const bool turned = order.reversed && order.column == TopColumn::name;
    return turned ? b.task.name < a.task.name : a.task.name < b.task.name;
  };
  std::stable_sort(block.rows.begin(), block.rows.end(), comesFirst);
}

TopTable::Cells TopTable::CellsOf(const Block& block, const Row& row) {
  const TaskTally& last = row.values.last;
  const TaskTally& all = row.values.all;
  return {std::to_string(row.task.priority),
          LoadText(block.last.LoadOf(last)),
          LoadText(block.all.LoadOf(all)),
          row.values.isIdle ? noValue : std::to_string(last.jobs),
          row.values.isIdle ? noValue : std::to_string(all.jobs),
          ResponseText(last, block.ticksPerSecond),
          ResponseText(all, block.ticksPerSecond),
          std::to_string(last.issues),
          std::to_string(all.issues),
          SafeText(row.task.name)};
}

// What belongs together is one space apart. The name comes last: it may be of any length.
std::string TopTable::Line(const Cells& cells) {
  std::string line;
  for (std::size_t i = 0; i + 1 < cells.size(); ++i) {
    widths_[i] = std::max(widths_[i], cells[i].size());
    const bool isFollowedByAll = i % 2 == 1;
    line += fmt::format("{:>{}}{}", cells[i], widths_[i], isFollowedByAll ? " " : "  ");
  }
  return line + cells.back();
}

std::vector<TopLine> TopTable::Lines(const TopOrder& order) {
  std::vector<TopLine> lines;
  for (Block& block : blocks_) {
    Sort(block, order);
    lines.insert(lines.end(), block.head.begin(), block.head.end());
    if (block.rows.empty()) continue;
    std::vector<TopLine> rows;
    for (const Row& row : block.rows) rows.push_back({Line(CellsOf(block, row))});
    // Behind the rows, which may have made columns wider.
    const char* response = block.ticksPerSecond == 0 ? "resp [t]" : "resp [s]";
    lines.push_back({Line({"prio", "load%", "all", "jobs", "all", response, "all", "issues", "all", "task"}),
                     Kind::headings});
    lines.insert(lines.end(), rows.begin(), rows.end());
  }
  return lines;
}

}  // namespace cli
