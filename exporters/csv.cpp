#include "csv.h"

#include <utility>

#include "entries.h"
#include "outputfile.h"
#include "text.h"

namespace exporters {
namespace {

void Append(fmt::memory_buffer& out, std::string_view text) { out.append(text); }

class Csv : public Exporter {
 public:
  explicit Csv(Files& files) : file_(files.Create("entries.csv")) {}

  void Add(const Source& source) override {
    const CsvRows rows(LogsOf(source.lane), RowStyleOf(source));
    if (!std::exchange(hasHeader_, true)) rows.Header(file_.Block());
    const auto onEntry = [&](const analysis::Cursor& cursor) {
      rows.Add(file_.Block(), cursor.Handle());
      file_.FlushIfFull();
    };
    const auto onGap = [&](const analysis::Gap& gap) {
      rows.Add(file_.Block(), gap.from, "gap");
      rows.Add(file_.Block(), gap.to, "gap_end");
      file_.FlushIfFull();
    };
    ForEachEntry(source, onEntry, onGap);
  }

  void End() override { file_.Flush(); }

 private:
  OutputFile file_;
  bool hasHeader_ = false;
};

}  // namespace

CsvRows::CsvRows(const Logs& logs, const RowStyle& style)
    : time_(style.time),
      seconds_(style.seconds),
      laneHeader_(style.lane.empty() ? "\r\n" : ",lane\r\n"),
      lane_(style.lane.empty() ? "\r\n" : "," + CsvField(style.lane) + "\r\n"),
      types_([](ETLLogType type) { return fmt::format(",{},{},", TypeName(type), type); }),
      categories_(logs, ",", [](const tasklog::Category& category) {
        return fmt::format("{},{}", CsvField(category.Name()), category.Id());
      }) {}

void CsvRows::Header(fmt::memory_buffer& out) const {
  Append(out, "ticks,");
  if (seconds_) Append(out, "seconds,");
  Append(out, "type,code,subject,subject_id,running,running_id");
  Append(out, laneHeader_);
}

void CsvRows::AppendTime(fmt::memory_buffer& out, std::uint64_t ticks) const {
  AppendNumber(out, ticks);
  if (seconds_) out.push_back(',');
  if (seconds_ && time_.HasSeconds()) time_.AppendSince(out, ticks);
}

void CsvRows::Add(fmt::memory_buffer& out, TLEntry entry) const {
  AppendTime(out, TLEntryGetTimestamp(entry));
  Append(out, types_.Of(entry));
  Append(out, categories_.Of(entry, 0));
  out.push_back(',');
  Append(out, categories_.Of(entry, 1));
  Append(out, lane_);
}

void CsvRows::Add(fmt::memory_buffer& out, std::uint64_t ticks, std::string_view type) const {
  AppendTime(out, ticks);
  out.push_back(',');
  Append(out, type);
  Append(out, ",,,,,");
  Append(out, lane_);
}

std::unique_ptr<Exporter> MakeCsv(Files& files) { return std::make_unique<Csv>(files); }

}  // namespace exporters
