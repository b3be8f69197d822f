#include "infoformat.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "logsummary.h"
#include "print.h"
#include "text.h"
#include "timeformat.h"

namespace cli {
namespace {

using Buffer = fmt::memory_buffer;

// By ETLCatType.
constexpr const char* kindNames[categoryKindCount] = {"task", "testpoint", "issue"};
constexpr const char* kindPlurals[categoryKindCount] = {"tasks", "testpoints", "issues"};
// By ETLLogType.
constexpr const char* typeKeys[entryTypeCount] = {"switch0", "switch1", "event",     "switch3",
                                                  "switch4", "switch5", "testpoint", "issue"};

// From start to stop; a damaged file may have them the wrong way round.
std::string DurationTicks(const tasklog::Log& log) {
  const std::uint64_t start = log.StartTime();
  const std::uint64_t stop = log.StopTime();
  return stop >= start ? fmt::format("{}", stop - start) : fmt::format("-{}", start - stop);
}

std::string DurationSeconds(const tasklog::Log& log) {
  return TimeFormat(log.StartTime(), log.TicksPerSecond()).Since(log.StopTime());
}

bool IsSwitch(std::size_t type) { return (TL_LOGS_SWITCHES >> type & 1) != 0; }

// "12 (type 0: 2, type 4: 10)"
std::string SwitchCounts(const LogSummary& summary) {
  std::uint64_t total = 0;
  std::string parts;
  for (std::size_t type = 0; type < entryTypeCount; ++type) {
    const std::uint64_t count = summary.entriesByType[type];
    if (!IsSwitch(type) || count == 0) continue;
    total += count;
    parts += fmt::format("{}type {}: {}", parts.empty() ? "" : ", ", type, count);
  }
  return parts.empty() ? "0" : fmt::format("{} ({})", total, parts);
}

void PrintPeriod(Buffer& out, const tasklog::Log& log) {
  Print(out, "  period        {} to {} ticks", log.StartTime(), log.StopTime());
  const TimeFormat time(0, log.TicksPerSecond());
  if (time.HasSeconds()) {
    Print(out, ", {} to {} s\n", time.Since(log.StartTime()), time.Since(log.StopTime()));
    Print(out, "  duration      {} s\n", DurationSeconds(log));
    Print(out, "  tick rate     {} ticks/s\n", log.TicksPerSecond());
  } else {
    Print(out, "\n  duration      {} ticks\n  tick rate     unknown\n", DurationTicks(log));
  }
}

std::uint64_t LostTicks(const std::vector<Gap>& gaps) {
  std::uint64_t ticks = 0;
  for (const Gap& gap : gaps) ticks += gap.to - gap.from;
  return ticks;
}

// What `record` noted; nothing for a file that stands alone.
void PrintRecording(Buffer& out, const Lane& lane, const LaneLog& loaded) {
  if (lane.files.size() > 1) Print(out, "  files         {}\n", lane.files.size());
  if (!loaded.gaps.empty()) {
    const TimeFormat time(0, loaded.log.TicksPerSecond());
    const std::uint64_t ticks = LostTicks(loaded.gaps);
    const std::string length = time.HasSeconds() ? time.Length(ticks) + " s" : fmt::format("{} ticks", ticks);
    Print(out, "  gaps          {}, {} in all\n", loaded.gaps.size(), length);
  }
  if (!loaded.metadata) return;
  if (!loaded.metadata->startedAt.empty()) {  // `join` and `repair` may know nothing but gaps
    Print(out, "  recorded      from {}, {} to {}\n", Quoted(loaded.metadata->target),
          SafeText(loaded.metadata->startedAt), SafeText(loaded.metadata->endedAt));
  }
  if (loaded.merged) Print(out, "  merged        {} loggers\n", loaded.metadata->loggers.size());
}

void PrintCounts(Buffer& out, const LogSummary& summary) {
  Print(out, "  entries       {}\n", summary.entries);
  Print(out, "    switches    {}\n", SwitchCounts(summary));
  Print(out, "    events      {}\n", summary.entriesByType[TLLogTaskEvent]);
  Print(out, "    testpoints  {}\n", summary.entriesByType[TLLogTestpoint]);
  Print(out, "    issues      {}\n", summary.entriesByType[TLLogTimingIssue]);
  Print(out, "  categories    {}\n", summary.categories.size());
  for (std::size_t kind = 0; kind < categoryKindCount; ++kind) {
    Print(out, "    {:<12}{}\n", kindPlurals[kind], summary.categoriesByKind[kind]);
  }
}

// Fills up to `width` columns; fmt would count what it does not show.
void PrintPadded(Buffer& out, const std::string& text, std::size_t width) {
  Print(out, "{}{:{}}", text, "", width - std::min(DisplayWidth(text), width));
}

void PrintTable(Buffer& out, const LogSummary& summary, ETLCatType kind, std::size_t nameWidth) {
  if (summary.categoriesByKind[kind] == 0) return;
  const bool tasks = kind == TLCatTask;
  out.append(std::string_view("\n  "));
  PrintPadded(out, kindNames[kind], nameWidth);
  Print(out, "  {:>8}  {:>10}  {:>10}  {:>10}\n", tasks ? "priority" : "", tasks ? "time slice" : "", "id",
        "entries");
  for (const auto& [category, entries] : summary.categories) {
    if (category.Type() != kind) continue;
    out.append(std::string_view("  "));
    PrintPadded(out, SafeText(category.Name()), nameWidth);
    if (tasks) {
      Print(out, "  {:>8}  {:>10}", category.Priority(), category.TimeSlice());
    } else {
      Print(out, "  {:>8}  {:>10}", "", "");
    }
    Print(out, "  0x{:08X}  {:>10}\n", category.Id(), entries);
  }
}

std::size_t NameWidth(const LogSummary& summary) {
  std::size_t width = std::string_view("testpoint").size();
  for (const auto& [category, entries] : summary.categories) {
    width = std::max(width, DisplayWidth(SafeText(category.Name())));
  }
  return width;
}

// ,"startTicks":"...", ... "durationSeconds":...
void PrintJsonPeriod(Buffer& out, const tasklog::Log& log) {
  Print(out, R"(,"startTicks":"{}","stopTicks":"{}","durationTicks":"{}")", log.StartTime(), log.StopTime(),
        DurationTicks(log));
  const TimeFormat time(0, log.TicksPerSecond());
  if (!time.HasSeconds()) {
    out.append(std::string_view(
        R"(,"ticksPerSecond":null,"startSeconds":null,"stopSeconds":null,"durationSeconds":null)"));
    return;
  }
  Print(out, R"(,"ticksPerSecond":{},"startSeconds":{},"stopSeconds":{},"durationSeconds":{})",
        log.TicksPerSecond(), time.Since(log.StartTime()), time.Since(log.StopTime()), DurationSeconds(log));
}

template <class Names, class Counts>
void PrintJsonCounts(Buffer& out, const Names& names, const Counts& counts) {
  for (std::size_t i = 0; i < counts.size(); ++i) {
    Print(out, "{}\"{}\":{}", i == 0 ? '{' : ',', names[i], counts[i]);
  }
  out.push_back('}');
}

void PrintJsonCategory(Buffer& out, const CategorySummary& summary) {
  const tasklog::Category& category = summary.category;
  Print(out, R"({{"kind":"{}","name":{},"id":{})", kindNames[category.Type()], JsonString(category.Name()),
        category.Id());
  if (category.Type() == TLCatTask) {
    Print(out, R"(,"priority":{},"timeSlice":{})", category.Priority(), category.TimeSlice());
  }
  Print(out, R"(,"entries":{}}})", summary.entries);
}

std::string TextOrNull(const std::string& text) { return text.empty() ? "null" : JsonString(text); }

// ,"files":[...],"gaps":[...],"recording":{...}
void PrintJsonRecording(Buffer& out, const Lane& lane, const LaneLog& loaded) {
  const char* separator = "";
  out.append(std::string_view(R"(,"files":[)"));
  for (const LaneFile& file : lane.files)
    Print(out, "{}{}", std::exchange(separator, ","), JsonString(file.path));
  out.append(std::string_view(R"(],"gaps":[)"));
  separator = "";
  for (const Gap& gap : loaded.gaps) {
    Print(out, R"({}{{"fromTicks":"{}","toTicks":"{}"}})", std::exchange(separator, ","), gap.from, gap.to);
  }
  out.append(std::string_view(R"(],"recording":)"));
  if (!loaded.metadata) return out.append(std::string_view("null"));
  const Metadata& metadata = *loaded.metadata;
  Print(out, R"({{"target":{},"startedAt":{},"endedAt":{},"switches":{},"idleTask":{},"merged":{}}})",
        JsonString(metadata.target), JsonString(metadata.startedAt), JsonString(metadata.endedAt),
        TextOrNull(loaded.switches), TextOrNull(loaded.idleTask), loaded.merged);
}

}  // namespace

void AppendInfoText(Buffer& out, const Lane& lane, const LaneLog& loaded) {
  const LogSummary summary = Summarize(loaded.log);
  Print(out, "{}\n", SafeText(lane.shownAs));
  PrintPeriod(out, loaded.log);
  PrintRecording(out, lane, loaded);
  PrintCounts(out, summary);
  const std::size_t nameWidth = NameWidth(summary);
  for (const ETLCatType kind : {TLCatTask, TLCatTestpoint, TLCatTimingIssue}) {
    PrintTable(out, summary, kind, nameWidth);
  }
}

void AppendInfoJson(Buffer& out, const Lane& lane, const LaneLog& loaded) {
  const LogSummary summary = Summarize(loaded.log);
  Print(out, R"({{"file":{})", JsonString(lane.shownAs));
  PrintJsonPeriod(out, loaded.log);
  Print(out, R"(,"entries":{},"entriesByType":)", summary.entries);
  PrintJsonCounts(out, typeKeys, summary.entriesByType);
  out.append(std::string_view(R"(,"categoriesByKind":)"));
  PrintJsonCounts(out, kindNames, summary.categoriesByKind);
  out.append(std::string_view(R"(,"categories":[)"));
  for (std::size_t i = 0; i < summary.categories.size(); ++i) {
    if (i > 0) out.push_back(',');
    PrintJsonCategory(out, summary.categories[i]);
  }
  out.push_back(']');
  if (loaded.metadata || lane.files.size() > 1) PrintJsonRecording(out, lane, loaded);
  out.push_back('}');
}

}  // namespace cli
