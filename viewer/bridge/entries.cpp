// Entries by their numbers, and the number of a time.
#include "cli/listformat.h"
#include "recording.h"

namespace viewer {
namespace {

// The last time with at most `index` entries before it.
Ticks TimeOf(const tasklog::Log& log, std::uint64_t index) {
  Ticks low = log.StartTime();
  Ticks high = log.StopTime();
  while (low < high) {
    const Ticks middle = low + (high - low + 1) / 2;
    log.EntriesCount({.to = middle - 1}) <= index ? low = middle : high = middle - 1;
  }
  return low;
}

std::uint64_t CountBefore(const tasklog::Log& log, Ticks time) {
  return time <= log.StartTime() ? 0 : log.EntriesCount({.to = std::min(time - 1, log.StopTime())});
}

}  // namespace

// Keys: `lane`, `count`, and either `first` or `time`: the first entry then or later. The entries are those
// of `tasklog list --format json`. Time: some logarithms, the entries asked for, and those of the first one's
// tick.
void Entries(Recording& recording, const Request& request, Answer& answer) {
  constexpr std::size_t most = 1000;
  const tasklog::Log& log = recording.LaneAt(request.Index("lane")).Of().loaded->log;
  const std::uint64_t all = log.EntriesCount();
  const std::uint64_t first = request.Has("time") ? CountBefore(log, request.Time("time"))
                                                  : std::min<std::uint64_t>(request.Index("first"), all);
  std::size_t left = std::min(request.Index("count"), most);
  answer.json.BeginObject();
  answer.json.Key("first").Count(first);
  answer.json.Key("all").Count(all);
  answer.json.Key("entries").Raw("");
  const auto format = cli::MakeEntryFormat(log, {.format = "json"});
  fmt::memory_buffer rows;
  format->Begin(rows);
  const Ticks from = TimeOf(log, first);
  std::uint64_t at = CountBefore(log, from);
  if (first < all)
    for (const auto& entry : log.Entries({.from = from})) {
      if (at++ < first) continue;
      if (left-- == 0) break;
      format->Add(rows, entry);
    }
  format->End(rows);
  answer.text.append(rows);
  answer.json.EndObject();
}

// Keys: `lane`, `from`, `to`, both included. The CSV of `tasklog list` for that time.
void EntriesCsv(Recording& recording, const Request& request, Answer& answer) {
  const tasklog::Log& log = recording.LaneAt(request.Index("lane")).Of().loaded->log;
  const auto format = cli::MakeEntryFormat(log, {.format = "csv"});
  format->Begin(answer.text);
  for (const auto& entry : log.Entries({.from = request.Time("from"), .to = request.Time("to")}))
    format->Add(answer.text, entry);
  format->End(answer.text);
}

}  // namespace viewer
