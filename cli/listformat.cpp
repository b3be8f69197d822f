#include "listformat.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "logsummary.h"
#include "text.h"
#include "timeformat.h"

namespace cli {
namespace {

using Buffer = fmt::memory_buffer;

// Types are four bits on the target.
constexpr std::size_t mostTypes = 16;

void Append(Buffer& out, std::string_view text) { out.append(text); }

// What is printed for each category of a log, made once.
class Labels {
 public:
  template <class Render>
  Labels(const tasklog::Log& log, std::string none, Render render) : none_(std::move(none)) {
    for (const auto& category : log.Categories()) labels_.emplace(category.Handle(), render(category));
  }
  const std::string& Of(const tasklog::Entry& entry, std::uint32_t slot) const {
    const TLCategory category = TLEntryGetCategory(entry.Handle(), slot);
    return category ? labels_.at(category) : none_;
  }

 private:
  std::string none_;
  std::unordered_map<TLCategory, std::string> labels_;
};

// What is printed for each type of entry, made once.
template <class Render>
std::array<std::string, mostTypes> TypeLabels(Render render) {
  std::array<std::string, mostTypes> labels;
  for (std::uint32_t type = 0; type < mostTypes; ++type) labels[type] = render(type);
  return labels;
}

class TextFormat : public EntryFormat {
 public:
  TextFormat(const tasklog::Log& log, const ListStyle& style)
      : time_(log.StartTime(), log.TicksPerSecond()),
        seconds_(!style.ticks && time_.HasSeconds()),
        timeWidth_(TimeWidth(log)),
        subjectWidth_(SubjectWidth(log)),
        types_(TypeLabels([&](ETLLogType type) { return TypeCell(type, style.colors); })),
        subjects_(log, Padded("-", subjectWidth_),
                  [this](const tasklog::Category& c) { return Padded(SafeText(c.Name()), subjectWidth_); }),
        running_(log, "-", [](const tasklog::Category& c) { return SafeText(c.Name()); }) {}

  void Begin(Buffer& out) override {
    fmt::format_to(fmt::appender(out), "{:>{}}  {:<{}}  {:<{}}  running\n", TimeHeader(), timeWidth_, "type",
                   typeWidth, "subject", subjectWidth_);
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
    Append(out, types_[entry.Type() % mostTypes]);
    Append(out, "  ");
    Append(out, subjects_.Of(entry, 0));
    Append(out, "  ");
    Append(out, running_.Of(entry, 1));
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
    const std::string name = TypeName(type);
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
  std::array<std::string, mostTypes> types_;
  Labels subjects_;
  Labels running_;
};

class CsvFormat : public EntryFormat {
 public:
  CsvFormat(const tasklog::Log& log, const ListStyle& style)
      : time_(log.StartTime(), log.TicksPerSecond()),
        secondsColumn_(!style.ticks),
        continues_(style.continues),
        laneHeader_(style.lane.empty() ? "\r\n" : ",lane\r\n"),
        lane_(style.lane.empty() ? "\r\n" : "," + CsvField(style.lane) + "\r\n"),
        types_(TypeLabels([](ETLLogType type) { return fmt::format(",{},{},", TypeName(type), type); })),
        categories_(log, ",", [](const tasklog::Category& c) {
          return fmt::format("{},{}", CsvField(c.Name()), c.Id());
        }) {}

  void Begin(Buffer& out) override {
    if (continues_) return;
    Append(out, "ticks,");
    if (secondsColumn_) Append(out, "seconds,");
    Append(out, "type,code,subject,subject_id,running,running_id");
    Append(out, laneHeader_);
  }

  void Add(Buffer& out, const tasklog::Entry& entry) override {
    AppendNumber(out, entry.Timestamp());
    if (secondsColumn_) out.push_back(',');
    if (secondsColumn_ && time_.HasSeconds()) time_.AppendSince(out, entry.Timestamp());
    Append(out, types_[entry.Type() % mostTypes]);
    Append(out, categories_.Of(entry, 0));
    out.push_back(',');
    Append(out, categories_.Of(entry, 1));
    Append(out, lane_);
  }

  void End(Buffer&) override {}

 private:
  TimeFormat time_;
  bool secondsColumn_;
  bool continues_;
  std::string_view laneHeader_;
  std::string lane_;
  std::array<std::string, mostTypes> types_;
  Labels categories_;
};

class JsonFormat : public EntryFormat {
 public:
  JsonFormat(const tasklog::Log& log, const ListStyle& style)
      : time_(log.StartTime(), log.TicksPerSecond()),
        secondsKey_(!style.ticks),
        continues_(style.continues),
        lane_(style.lane.empty() ? "}" : R"(,"lane":)" + JsonString(style.lane) + "}"),
        first_(!style.continuesEntries),
        types_(TypeLabels(
            [](ETLLogType type) { return fmt::format(R"(,"type":"{}","code":{})", TypeName(type), type); })),
        subjects_(log, R"(,"subject":null,"subjectId":null)",
                  [](const tasklog::Category& c) { return Keys("subject", c); }),
        running_(log, R"(,"running":null,"runningId":null)",
                 [](const tasklog::Category& c) { return Keys("running", c); }) {}

  void Begin(Buffer& out) override { Append(out, continues_ ? "" : "["); }

  void Add(Buffer& out, const tasklog::Entry& entry) override {
    Append(out, std::exchange(first_, false) ? "\n{\"ticks\":\"" : ",\n{\"ticks\":\"");
    AppendNumber(out, entry.Timestamp());
    out.push_back('"');
    if (secondsKey_) AppendSeconds(out, entry.Timestamp());
    Append(out, types_[entry.Type() % mostTypes]);
    Append(out, subjects_.Of(entry, 0));
    Append(out, running_.Of(entry, 1));
    Append(out, lane_);
  }

  void End(Buffer& out) override { Append(out, first_ ? "]\n" : "\n]\n"); }

 private:
  static std::string Keys(const char* slot, const tasklog::Category& category) {
    return fmt::format(R"(,"{0}":{1},"{0}Id":{2})", slot, JsonString(category.Name()), category.Id());
  }

  void AppendSeconds(Buffer& out, std::uint64_t ticks) const {
    Append(out, R"(,"seconds":)");
    if (!time_.HasSeconds()) return Append(out, "null");
    time_.AppendSince(out, ticks);
  }

  TimeFormat time_;
  bool secondsKey_;
  bool continues_;
  std::string lane_;
  bool first_;
  std::array<std::string, mostTypes> types_;
  Labels subjects_;
  Labels running_;
};

}  // namespace

std::unique_ptr<EntryFormat> MakeEntryFormat(const tasklog::Log& log, const ListStyle& style) {
  if (style.format == "csv") return std::make_unique<CsvFormat>(log, style);
  if (style.format == "json") return std::make_unique<JsonFormat>(log, style);
  return std::make_unique<TextFormat>(log, style);
}

}  // namespace cli
