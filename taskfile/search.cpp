#include "taskfile/search.h"

namespace taskfile {
namespace {

// A few of a section's first records, of which one at least must be one where its header is believed.
constexpr u32 firstRecords = 4;
// So many records in order behind a header are no accident.
constexpr u32 certainCount = 4;

bool IsPrintable(std::string_view name) {
  const std::string_view text = TextOf(name);
  return std::all_of(text.begin(), text.end(),
                     [](char letter) { return static_cast<u8>(letter) >= 0x20 && letter != 0x7F; });
}

// But for one letter and the end.
bool IsAlmostPrintable(std::string_view name) {
  return std::count_if(name.begin(), name.end(),
                       [](char letter) { return static_cast<u8>(letter) < 0x20; }) <= 2;
}

// As a writer leaves names: one NUL, at the end.
bool IsWritten(std::string_view name) { return !name.empty() && name.find('\0') == name.size() - 1; }

}  // namespace

// Tasks without a name are left aside: too many bytes look like them.
std::optional<Section> Search::HeaderAt(std::size_t at) const {
  if (!LiesIn(bytes_, at, sizeof(u32))) return std::nullopt;
  const u32 nameSize = Load<u32>(bytes_, at);
  if (nameSize < 2 || nameSize > longestName || !LiesIn(bytes_, at, sectionHeaderSize + nameSize))
    return std::nullopt;
  if (!IsWritten(bytes_.substr(at + sizeof(u32), nameSize))) return std::nullopt;
  Section section = SectionAt(bytes_, at, nameSize, Kind::task);
  section.kind = KindOf(section);
  return section;
}

// A task may bear the name of another section, which has no epilog.
Kind Search::KindOf(const Section& section) const {
  const std::string_view name = TextOf(section.name);
  const u64 end = section.PlainEnd();
  if (section.count > 1 && end <= bytes_.size() && IsEpilog(static_cast<std::size_t>(end) - recordSize))
    return Kind::task;
  if (layout_.hasStamps && name == NameOf(Kind::stamps)) return Kind::stamps;
  if (layout_.hasEvents && name == NameOf(Kind::events)) return Kind::events;
  if (section.priority != 0 || section.timeSlice != 0) return Kind::task;
  // The name may be damaged: what stands there says it too, at once or behind the prolog.
  for (const Kind kind : {Kind::stamps, Kind::events}) {
    const std::size_t first = section.recordsAt;
    constexpr std::size_t unnamed = recordSize + sizeof(u32) + 1;
    if (EventRecordAt(first, kind) > unnamed || EventRecordAt(first + recordSize, kind) > unnamed)
      return kind;
  }
  return Kind::task;
}

// An area of zeros holds none.
bool Search::IsTaskRecord(std::size_t at) const {
  if (!LiesIn(bytes_, at, recordSize)) return false;
  const u32 koWord = Load<u32>(bytes_, at);
  return koWord <= koLastOfTask && (koWord | Load<u64>(bytes_, at + 4) | Load<u64>(bytes_, at + 8)) != 0;
}

bool Search::IsRecordInPeriod(std::size_t at) const {
  return IsTaskRecord(at) && Plain(at).time >= header_.startTime && Plain(at).time <= header_.stopTime;
}

std::size_t Search::EventRecordAt(std::size_t at, Kind kind) const {
  const Record record = RecordAt(bytes_, at, layout_);
  if (record.size == 0 || record.koWord != (kind == Kind::stamps ? koTestpoint : koTimingIssue)) return 0;
  if (layout_.HasName(record.KoType())) return IsWritten(record.name) ? record.size : 0;
  return record.time >= header_.startTime && record.time <= header_.stopTime ? record.size : 0;
}

bool Search::IsEpilog(std::size_t at) const {
  const Record record = Plain(at);
  return record.size > 0 && record.koWord >= 1 && record.koWord <= koSwitchedOut1 && record.id == 0 &&
         record.time == header_.stopTime;
}

// A count of 0 is believed when the next section follows, or where a save that stopped left it.
bool Search::BeginsWell(const Section& section) {
  const std::size_t first = section.recordsAt;
  for (u32 i = 0; i < std::min(section.count, firstRecords); ++i)
    if (IsRecordInPeriod(first + recordSize * i)) return true;
  if (section.count > 0) return IsWhole(section);
  if (IsTaskRecord(first) && Plain(first).time == header_.startTime) return true;
  const auto following = HeaderAt(first);
  return first == bytes_.size() || (following && IsPrintable(following->name));
}

bool Search::IsWhole(const Section& section) {
  if (section.count == 0) return section.kind != Kind::task;
  if (section.kind == Kind::task) {
    const u64 end = section.PlainEnd();
    if (end > bytes_.size() || !IsTaskRecord(section.recordsAt)) return false;
    const auto last = static_cast<std::size_t>(end) - recordSize;
    const std::size_t second = section.recordsAt + recordSize;
    return IsTaskRecord(last) && (second >= last || EndOfStretch(second) >= last);
  }
  return EndOfEvents(section).has_value();
}

std::optional<std::size_t> Search::EndOfEvents(const Section& section) const {
  std::size_t at = section.recordsAt;
  for (u32 i = 0; i < section.count; ++i) {
    const std::size_t size = EventRecordAt(at, section.kind);
    const bool isAtEnd = i == 0 || i + 1 == section.count;
    if (size == 0 && !(isAtEnd && IsTaskRecord(at))) return std::nullopt;
    at += size > 0 ? size : recordSize;
  }
  return at;
}

bool Search::IsCertain(const Section& section) {
  // Testpoints may have these names, too, but zeros do not follow there.
  if (section.kind != Kind::task) return section.priority == 0 && section.timeSlice == 0;
  const bool isAtStart =
      IsTaskRecord(section.recordsAt) && Plain(section.recordsAt).time == header_.startTime;
  if (isAtStart && IsPrintable(section.name)) return true;
  const bool endsWell = section.count > 0 && MayEndAt(section.PlainEnd());
  if (endsWell && IsPrintable(section.name) && BeginsWell(section)) return true;
  return IsWhole(section) && (section.count >= certainCount || isAtStart || endsWell);
}

bool Search::MayEndAt(u64 at) {
  if (at >= bytes_.size()) return at == bytes_.size();
  const auto section = HeaderAt(static_cast<std::size_t>(at));
  if (!section) return false;
  if (section->kind != Kind::task) return true;
  return (IsPrintable(section->name) && BeginsWell(*section)) || IsWhole(*section);
}

std::optional<Section> Search::DueAt(std::size_t at) {
  const auto stated = HeaderAt(at);
  if (stated && IsPrintable(stated->name)) {
    if (stated->kind != Kind::task || BeginsWell(*stated)) return stated;
    if (stated->count > 0 && MayEndAt(stated->PlainEnd())) return stated;
  }
  if (stated && IsWhole(*stated)) return stated;
  if (!LiesIn(bytes_, at, sizeof(u32))) return std::nullopt;
  // The name has been changed, or its length.
  const std::string_view name = bytes_.substr(at + sizeof(u32), longestName);
  for (const std::size_t size : {name.find('\0') + 1, std::size_t{Load<u32>(bytes_, at)}}) {
    if (size < 1 || size > name.size() || !LiesIn(bytes_, at, sectionHeaderSize + size)) continue;
    Section section = SectionAt(bytes_, at, size, Kind::task);
    section.kind = KindOf(section);
    if (IsAlmostPrintable(section.name) && IsWhole(section) && IsCertain(section)) return section;
  }
  return std::nullopt;
}

const Section& Search::NextFrom(std::size_t at) {
  if (next_ && next_->at >= at) return *next_;
  for (; at + sectionHeaderSize < bytes_.size(); ++at) {
    if (bytes_[at + 3] != 0 || bytes_[at + 2] != 0) continue;  // a length of 65536 or more
    next_ = HeaderAt(at);
    if (next_ && IsCertain(*next_)) return *next_;
  }
  next_.emplace().at = bytes_.size();
  return *next_;
}

std::size_t Search::EndOfStretch(std::size_t at) {
  Stretch& known = stretches_[at % recordSize];
  if (at >= known.begin && at < known.end) return known.end;
  std::size_t end = at;
  u64 time = 0;
  while (IsTaskRecord(end) && Plain(end).time >= time) {
    if (end == known.begin && end < known.end) {
      end = known.end;
      break;
    }
    time = Plain(end).time;
    end += recordSize;
  }
  known = {at, end};
  return end;
}

}  // namespace taskfile
