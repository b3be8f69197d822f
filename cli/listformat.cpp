#include "listformat.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "exporters/jsonl.h"
#include "print.h"
#include "text.h"
#include "timeformat.h"

namespace cli {
namespace {

using Buffer = fmt::memory_buffer;

void Append(Buffer& out, std::string_view text) { out.append(text); }

class TextFormat : public EntryFormat {
 public:
  TextFormat(const tasklog::Log& log, const ListStyle& style)
      : time_(log.StartTime(), log.TicksPerSecond()),
        seconds_(!style.ticks && time_.HasSeconds()),
        timeWidth_(TimeWidth(log)),
        subjectWidth_(SubjectWidth(log)),
        types_([&](ETLLogType type) { return TypeCell(type, style.colors); }),
        subjects_({&log}, Padded("-", subjectWidth_),
                  [this](const tasklog::Category& c) { return Padded(SafeText(c.Name()), subjectWidth_); }),
        running_({&log}, "-", [](const tasklog::Category& c) { return SafeText(c.Name()); }) {}

  void Begin(Buffer& out) override {
    Print(out, "{:>{}}  {:<{}}  {:<{}}  running\n", TimeHeader(), timeWidth_, "type", typeWidth, "subject",
          subjectWidth_);
  }

  void Add(Buffer& out, const tasklog::Entry& entry) override {
    const std::size_t start = out.size();
    if (seconds_) {
      time_.AppendSince(out, entry.Timestamp());
    } else {
      AppendNumber(out, entry.Timestamp());
    }
    AlignRight(out, start, timeWidth_);
    Append(out, "  ");
    Append(out, types_.Of(entry.Handle()));
    Append(out, "  ");
    Append(out, subjects_.Of(entry.Handle(), 0));
    Append(out, "  ");
    Append(out, running_.Of(entry.Handle(), 1));
    out.push_back('\n');
  }

  void End(Buffer&) override {}

 private:
  static constexpr std::size_t typeWidth = 9;
  // A name longer than this pushes its line out rather than all lines.
  static constexpr std::size_t widestSubject = 40;

  const char* TimeHeader() const { return seconds_ ? "time [s]" : "ticks"; }

  std::size_t TimeWidth(const tasklog::Log& log) const {
    const std::uint64_t stop = std::max(log.StartTime(), log.StopTime());
    const std::string last = seconds_ ? time_.Since(stop) : std::to_string(stop);
    return std::max(last.size(), std::string_view(TimeHeader()).size());
  }

  static std::size_t SubjectWidth(const tasklog::Log& log) {
    std::size_t width = std::string_view("subject").size();
    for (const auto& category : log.Categories()) {
      width = std::max(width, DisplayWidth(SafeText(category.Name())));
    }
    return std::min(width, widestSubject);
  }

  static std::string Padded(std::string text, std::size_t width) {
    text.append(width - std::min(DisplayWidth(text), width), ' ');
    return text;
  }

  // The plain switch needs no number.
  static std::string TypeCell(ETLLogType type, bool colors) {
    const std::string name = exporters::TypeName(type);
    const bool numbered = name == "switch" && type != TLLogSwitch4;
    const std::string cell = Padded(numbered ? fmt::format("{} {}", name, type) : name, typeWidth);
    if (!colors) return cell;
    switch (type) {
      case TLLogTimingIssue: return "\x1b[1;31m" + cell + "\x1b[0m";
      case TLLogTestpoint: return "\x1b[36m" + cell + "\x1b[0m";
      case TLLogTaskEvent: return "\x1b[33m" + cell + "\x1b[0m";
      default: return cell;
    }
  }

  static void AlignRight(Buffer& out, std::size_t start, std::size_t width) {
    const std::size_t length = out.size() - start;
    if (length >= width) return;
    out.resize(start + width);
    std::move_backward(out.data() + start, out.data() + start + length, out.data() + start + width);
    std::fill_n(out.data() + start, width - length, ' ');
  }

  TimeFormat time_;
  bool seconds_;
  std::size_t timeWidth_;
  std::size_t subjectWidth_;
  exporters::TypeLabels types_;
  exporters::Labels subjects_;
  exporters::Labels running_;
};

exporters::RowStyle RowStyleOf(const tasklog::Log& log, const ListStyle& style) {
  return {TimeFormat(log.StartTime(), log.TicksPerSecond()), !style.ticks, style.lane};
}

class CsvFormat : public EntryFormat {
 public:
  CsvFormat(const tasklog::Log& log, const ListStyle& style)
      : rows_({&log}, RowStyleOf(log, style)), continues_(style.continues) {}

  void Begin(Buffer& out) override {
    if (!continues_) rows_.Header(out);
  }
  void Add(Buffer& out, const tasklog::Entry& entry) override { rows_.Add(out, entry.Handle()); }
  void End(Buffer&) override {}

 private:
  exporters::CsvRows rows_;
  bool continues_;
};

class JsonFormat : public EntryFormat {
 public:
  JsonFormat(const tasklog::Log& log, const ListStyle& style)
      : rows_({&log}, RowStyleOf(log, style)), continues_(style.continues), first_(!style.continuesEntries) {}

  void Begin(Buffer& out) override { Append(out, continues_ ? "" : "["); }
  void Add(Buffer& out, const tasklog::Entry& entry) override {
    Append(out, std::exchange(first_, false) ? "\n" : ",\n");
    rows_.Add(out, entry.Handle());
  }
  void End(Buffer& out) override { Append(out, first_ ? "]\n" : "\n]\n"); }

 private:
  exporters::JsonRows rows_;
  bool continues_;
  bool first_;
};

}  // namespace

std::unique_ptr<EntryFormat> MakeEntryFormat(const tasklog::Log& log, const ListStyle& style) {
  if (style.format == "csv") return std::make_unique<CsvFormat>(log, style);
  if (style.format == "json") return std::make_unique<JsonFormat>(log, style);
  return std::make_unique<TextFormat>(log, style);
}

}  // namespace cli
