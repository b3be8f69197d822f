#include "jsonl.h"

#include "entries.h"
#include "outputfile.h"
#include "print.h"
#include "text.h"

namespace exporters {
namespace {

constexpr const char* noSubject = R"(,"subject":null,"subjectId":null)";
constexpr const char* noRunning = R"(,"running":null,"runningId":null)";

void Append(fmt::memory_buffer& out, std::string_view text) { out.append(text); }

std::string Keys(const char* slot, const tasklog::Category& category) {
  return fmt::format(R"(,"{0}":{1},"{0}Id":{2})", slot, JsonString(category.Name()), category.Id());
}

class JsonLines : public Exporter {
 public:
  explicit JsonLines(Files& files) : file_(files.Create("entries.jsonl")) {}

  void Add(const Source& source) override {
    const JsonRows rows(LogsOf(source.lane), RowStyleOf(source));
    const auto add = [&](auto... what) {
      rows.Add(file_.Block(), what...);
      file_.Block().push_back('\n');
      file_.FlushIfFull();
    };
    const auto onGap = [&](const analysis::Gap& gap) {
      add(gap.from, "gap");
      add(gap.to, "gap_end");
    };
    ForEachEntry(
        source, [&](const analysis::Cursor& cursor) { add(cursor.Handle()); }, onGap);
  }

  void End() override { file_.Flush(); }

 private:
  OutputFile file_;
};

}  // namespace

JsonRows::JsonRows(const Logs& logs, const RowStyle& style)
    : time_(style.time),
      seconds_(style.seconds),
      lane_(style.lane.empty() ? "}" : R"(,"lane":)" + JsonString(style.lane) + "}"),
      types_([](ETLLogType type) { return fmt::format(R"(,"type":"{}","code":{})", TypeName(type), type); }),
      subjects_(logs, noSubject, [](const tasklog::Category& c) { return Keys("subject", c); }),
      running_(logs, noRunning, [](const tasklog::Category& c) { return Keys("running", c); }) {}

void JsonRows::AppendTime(fmt::memory_buffer& out, std::uint64_t ticks) const {
  Append(out, "{\"ticks\":\"");
  AppendNumber(out, ticks);
  out.push_back('"');
  if (!seconds_) return;
  Append(out, R"(,"seconds":)");
  time_.HasSeconds() ? time_.AppendSince(out, ticks) : Append(out, "null");
}

void JsonRows::Add(fmt::memory_buffer& out, TLEntry entry) const {
  AppendTime(out, TLEntryGetTimestamp(entry));
  Append(out, types_.Of(entry));
  Append(out, subjects_.Of(entry, 0));
  Append(out, running_.Of(entry, 1));
  Append(out, lane_);
}

void JsonRows::Add(fmt::memory_buffer& out, std::uint64_t ticks, std::string_view type) const {
  AppendTime(out, ticks);
  Print(out, R"(,"type":"{}","code":null{}{})", type, noSubject, noRunning);
  Append(out, lane_);
}

std::unique_ptr<Exporter> MakeJsonLines(Files& files) { return std::make_unique<JsonLines>(files); }

}  // namespace exporters
