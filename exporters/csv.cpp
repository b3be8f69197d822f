#include "csv.h"

#include <utility>

#include "digits.h"
#include "entries.h"
#include "outputfile.h"
#include "text.h"

namespace exporters {
namespace {

// The ticks, a comma and the seconds.
constexpr std::size_t mostRowTimeBytes = mostDigits + 1 + mostTimeBytes;

void Append(fmt::memory_buffer& out, std::string_view text) { out.append(text); }

std::string Fields(const tasklog::Category& category) {
  return fmt::format("{},{}", CsvField(category.Name()), category.Id());
}

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
      subjects_(logs, ",,", [](const tasklog::Category& category) { return Fields(category) + ","; }),
      running_(logs, "," + lane_, [this](const tasklog::Category& c) { return Fields(c) + lane_; }) {}

void CsvRows::Header(fmt::memory_buffer& out) const {
  Append(out, "ticks,");
  if (seconds_) Append(out, "seconds,");
  Append(out, "type,code,subject,subject_id,running,running_id");
  Append(out, laneHeader_);
}

char* CsvRows::PutTime(char* at, std::uint64_t ticks) const {
  at = PutNumber(at, ticks);
  if (seconds_) *at++ = ',';
  return seconds_ && time_.HasSeconds() ? time_.PutSince(at, ticks) : at;
}

// A row is put into room that is made at once.
void CsvRows::Add(fmt::memory_buffer& out, TLEntry entry) const {
  const PaddedText& type = types_.TextOf(entry);
  const PaddedText& subject = subjects_.TextOf(entry, 0);
  const PaddedText& running = running_.TextOf(entry, 1);
  const std::size_t size = out.size();
  out.resize(size + mostRowTimeBytes + type.Size() + subject.Size() + running.Size() + PaddedText::slack);
  char* at = PutTime(out.data() + size, TLEntryGetTimestamp(entry));
  at = running.PutAt(subject.PutAt(type.PutAt(at)));
  out.resize(static_cast<std::size_t>(at - out.data()));
}

void CsvRows::Add(fmt::memory_buffer& out, std::uint64_t ticks, std::string_view type) const {
  char time[mostRowTimeBytes];
  out.append(time, PutTime(time, ticks));
  out.push_back(',');
  Append(out, type);
  Append(out, ",,,,,");
  Append(out, lane_);
}

std::unique_ptr<Exporter> MakeCsv(Files& files) { return std::make_unique<Csv>(files); }

}  // namespace exporters
