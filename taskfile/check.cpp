#include "taskfile/check.h"

#include <utility>

#include "taskfile/order.h"
#include "taskfile/period.h"

namespace taskfile {
namespace {

constexpr std::size_t progressBytes = 4 << 20;  // between two calls

std::string Hex(u64 value) {
  std::string digits;
  for (; value > 0 || digits.empty(); value /= 16)
    digits.insert(digits.begin(), "0123456789ABCDEF"[value % 16]);
  return "0x" + std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits;
}

std::string InQuotes(std::string_view text) { return "'" + std::string(text) + "'"; }

class Checker {
 public:
  Checker(std::string_view bytes, const Progress& progress, Findings& findings)
      : bytes_(bytes), progress_(progress), findings_(findings), votes_(findings.header) {}

  // Throws the first fault.
  void Run() {
    CheckHeader();
    const Header& header = findings_.header;
    at_ = headerSize;
    for (u32 i = 0; i < header.taskCount; ++i) CheckSection(Kind::task);
    if (layout_.hasStamps) CheckSection(Kind::stamps);
    if (layout_.hasEvents) CheckSection(Kind::events);
    if (at_ < bytes_.size())
      throw Fault{at_, "behind the last section", std::to_string(bytes_.size() - at_) + " bytes",
                  "the end of the file"};
    CheckPeriod();
  }

 private:
  void CheckHeader();
  void CheckSection(Kind kind);
  void CheckRecords(const Section& section);
  void CheckOrder(const OrderRule& rule, std::size_t at, u32 count) const;
  void CheckPeriod() const;

  // The bytes of a field, which must lie in the file.
  void Need(std::size_t at, std::size_t size, const std::string& field) const {
    if (!LiesIn(bytes_, at, size))
      throw Fault{bytes_.size(), field, "the end of the file",
                  std::to_string(at + size - bytes_.size()) + " more bytes"};
  }
  std::string SectionText() const {
    const Section& section = findings_.sections.back();
    return "section " + std::to_string(findings_.sections.size()) + " (" + InQuotes(TextOf(section.name)) +
           ")";
  }
  std::string RecordText(u32 index) const {
    return "record " + std::to_string(u64{index} + 1) + " of " +
           std::to_string(findings_.sections.back().count) + " in " + SectionText();
  }
  [[noreturn]] void ThrowBadRecord(std::size_t at, u32 index) const;
  void ShowProgress() {
    if (at_ < nextProgress_) return;
    nextProgress_ = at_ + progressBytes;
    progress_(static_cast<double>(at_) / static_cast<double>(bytes_.size()));
  }

  std::string_view bytes_;
  const Progress& progress_;
  Findings& findings_;
  Layout layout_{0};
  PeriodVotes votes_;
  std::size_t at_ = 0;
  std::size_t nextProgress_ = 0;
};

void Checker::CheckHeader() {
  const std::string_view begin = bytes_.substr(0, magic.size());
  if (!magic.starts_with(begin)) throw Fault{0, "magic", InQuotes(begin), InQuotes(magic)};
  Need(0, headerSize, "header");
  Header& header = findings_.header = Header::In(bytes_);
  if (header.baseVersion > newestBaseVersion)
    throw Fault{baseVersionAt, "base version", Hex(header.baseVersion),
                "at most " + Hex(newestBaseVersion) + "; a newer program may know it"};
  if (header.divisor == 0) throw Fault{divisorAt, "tick rate divisor", "0", "1"};
  layout_ = Layout(header.Version());
}

void Checker::CheckSection(Kind kind) {
  const std::string field = "header of section " + std::to_string(findings_.sections.size() + 1);
  Need(at_, sizeof(u32), field);
  const u32 nameSize = Load<u32>(bytes_, at_);
  if (nameSize > longestName)
    throw Fault{at_, field + ", length of the name", std::to_string(nameSize), "at most 256"};
  Need(at_, sectionHeaderSize + nameSize, field);
  const Section& section = findings_.sections.emplace_back(SectionAt(bytes_, at_, nameSize, kind));
  if (kind != Kind::task && TextOf(section.name) != NameOf(kind))
    throw Fault{at_ + sizeof(u32), field + ", name", InQuotes(TextOf(section.name)), InQuotes(NameOf(kind))};
  CheckRecords(section);
  findings_.records += section.count;
}

void Checker::CheckRecords(const Section& section) {
  const Header& header = findings_.header;
  at_ = section.recordsAt;
  Record ends[4];  // the first two and the last two
  OrderRule order(header);
  std::size_t second = at_;
  for (u32 i = 0; i < section.count; ++i) {
    const Record record = RecordAt(bytes_, at_, layout_);
    const bool isLast = i + 1 == section.count;
    if (record.size == 0 || !MayStandIn(section.kind, record, i == 0, isLast) ||
        !IsBelievable(record, header))
      ThrowBadRecord(at_, i);
    if (i > 0 && !isLast) order.Add(record);
    if (i < 2) ends[i] = record;
    if (i == 1) second = at_;
    ends[2] = std::exchange(ends[3], record);
    at_ += record.size;
    ShowProgress();
  }
  if (order.Applies()) CheckOrder(order, second, section.count - 2);
  if (section.count > 1) votes_.Add(section.kind, ends[0], ends[1], ends[2], ends[3]);
}

void Checker::ThrowBadRecord(std::size_t at, u32 index) const {
  const Section& section = findings_.sections.back();
  Need(at, recordSize, RecordText(index));
  const Record record = RecordAt(bytes_, at, layout_);
  const bool mayStand = MayStandIn(section.kind, record, index == 0, index + 1 == section.count);
  if (mayStand && record.size == 0) {
    const std::size_t lengthAt = at + recordSize;
    Need(lengthAt, sizeof(u32), RecordText(index) + ", name");
    const u32 length = Load<u32>(bytes_, lengthAt);
    if (length <= longestName) Need(lengthAt + sizeof(u32), length, RecordText(index) + ", name");
    throw Fault{lengthAt, RecordText(index) + ", length of the name", std::to_string(length), "at most 256"};
  }
  if (mayStand && record.koWord == 0) throw Fault{at, RecordText(index), "zeros alone", "a record"};
  const char* const expected[] = {"0 to 6", "7", "8"};
  throw Fault{at, RecordText(index) + ", Ko type",
              record.koWord > UINT8_MAX ? Hex(record.koWord) : std::to_string(record.koWord),
              expected[static_cast<int>(section.kind)]};
}

// Throws for the first of the records that are damaged by the rule.
void Checker::CheckOrder(const OrderRule& rule, std::size_t at, u32 count) const {
  for (u32 i = 0; i < count; ++i) {
    const Record record = RecordAt(bytes_, at, layout_);
    if (rule.IsDamaged(record))
      throw Fault{at + 8, RecordText(i + 1) + ", time", std::to_string(record.time),
                  "in order with those beside it, or between " + std::to_string(findings_.header.startTime) +
                      " and " + std::to_string(findings_.header.stopTime)};
    at += record.size;
  }
}

void Checker::CheckPeriod() const {
  const Header& header = findings_.header;
  if (const auto start = votes_.Start())
    throw Fault{startTimeAt, "start time", std::to_string(header.startTime),
                std::to_string(*start) + ", at which the sections begin"};
  if (const auto stop = votes_.Stop())
    throw Fault{stopTimeAt, "stop time", std::to_string(header.stopTime),
                std::to_string(*stop) + ", at which the sections end"};
}

}  // namespace

Findings Check(std::string_view bytes, const Progress& progress) {
  Findings findings;
  try {
    Checker(bytes, progress, findings).Run();
  } catch (Fault& fault) {
    findings.fault = std::move(fault);
  }
  return findings;
}

std::optional<ReaderSections> SectionsOf(std::string_view bytes, const Layout& layout, u32 taskCount) {
  ReaderSections found{.end = headerSize};
  const u64 count = u64{taskCount} + static_cast<u64>(layout.EventSections());
  for (u64 i = 0; i < count; ++i) {
    const std::size_t at = found.end;
    if (!LiesIn(bytes, at, sizeof(u32))) return std::nullopt;
    const u32 nameSize = Load<u32>(bytes, at);
    if (nameSize > longestName || !LiesIn(bytes, at, sectionHeaderSize + nameSize)) return std::nullopt;
    const Kind kind = i < taskCount ? Kind::task : i == taskCount ? Kind::stamps : Kind::events;
    const Section& section = found.sections.emplace_back(SectionAt(bytes, at, nameSize, kind));
    found.end = section.recordsAt;
    for (u32 record = 0; record < section.count; ++record) {
      const std::size_t size = RecordAt(bytes, found.end, layout).size;
      if (size == 0) return std::nullopt;
      found.end += size;
    }
  }
  return found;
}

std::optional<ReaderSections> AsReaderTakesIt(std::string_view bytes) {
  if (!bytes.starts_with(magic) || bytes.size() < headerSize) return std::nullopt;
  const Header header = Header::In(bytes);
  if (header.baseVersion > newestBaseVersion || header.divisor == 0) return std::nullopt;
  return SectionsOf(bytes, Layout(header.Version()), header.taskCount);
}

}  // namespace taskfile
