// Goes from section to section, and over what is damaged to the next.
#include <utility>

#include "taskfile/salvage.h"
#include "taskfile/search.h"

namespace taskfile {
namespace {

class Finder {
 public:
  Finder(std::string_view bytes, const Header& header, std::vector<Span>& lost)
      : bytes_(bytes), header_(header), layout_(header.Version()), search_(bytes, header), lost_(lost) {}

  std::vector<FoundSection> Find(const Progress& progress) {
    std::size_t at = headerSize;
    while (at < bytes_.size()) {
      progress(static_cast<double>(at) / static_cast<double>(bytes_.size()));
      const auto due = search_.DueAt(at);
      const Section section = due ? *due : search_.NextFrom(at);
      if (section.at > at) Lose({at, section.at});
      if (section.at == bytes_.size()) break;
      FoundSection found = section.kind == Kind::task ? TaskFrom(section) : EventsFrom(section);
      at = found.areas.empty() ? section.recordsAt : found.areas.back().end;
      Add(std::move(found));
    }
    AddOrphans();
    return std::move(found_);
  }

 private:
  // A section whose count agrees with what follows is whole. Of any other the records tell where it ends.
  FoundSection TaskFrom(const Section& section) {
    FoundSection found{.section = section};
    const std::size_t begin = section.recordsAt;
    const bool isHalfWritten = section.count == 0 && search_.IsTaskRecord(begin) && IsAtStart(begin);
    const u64 end = section.PlainEnd();
    const bool endsWell =
        search_.MayEndAt(end) &&
        (section.count == 0 || search_.IsTaskRecord(static_cast<std::size_t>(end) - recordSize));
    if (!isHalfWritten && endsWell) {
      if (section.count > 0) found.areas = {{begin, static_cast<std::size_t>(end)}};
      return found;
    }
    const std::size_t limit = search_.NextFrom(begin).at;
    const std::size_t endOfRecords = EndOfTask(section, limit, found.isToEnd);
    if (endOfRecords > begin) found.areas = {{begin, endOfRecords}};
    return found;
  }

  std::size_t EndOfTask(const Section& section, std::size_t limit, bool& isToEnd) {
    const std::size_t begin = section.recordsAt;
    const u64 stated = section.PlainEnd();
    const bool isLast = limit == bytes_.size();
    bool endsWithEpilog = false;
    const std::size_t end = EndOfOrder(begin, limit, endsWithEpilog);
    const bool endsWithFile = isLast && limit - end < recordSize;
    isToEnd = endsWithEpilog || (end == limit && !isLast) || (endsWithFile && stated == end);
    if (endsWithFile && section.count > 0 && stated <= end) {
      isToEnd = true;
      return static_cast<std::size_t>(stated);
    }
    if (endsWithEpilog || end == limit || endsWithFile) return end;
    isToEnd = section.count > 0 && stated <= limit;
    if (isToEnd) return static_cast<std::size_t>(stated);
    // Damaged here, and its count as well, or the rest is missing: what follows may still be of this task.
    const bool goesOn = section.count > 0 || search_.IsTaskRecord(begin);
    return goesOn ? EndAtEpilog(end, limit, isToEnd) : end;
  }

  // Over records in order, the first aside, to the epilog.
  std::size_t EndOfOrder(std::size_t at, std::size_t limit, bool& endsWithEpilog) {
    const std::size_t begin = at;
    u64 time = 0;
    bool wasInside = false;
    for (; limit - at >= recordSize && search_.IsTaskRecord(at); at += recordSize) {
      const u64 next = Load<u64>(bytes_, at + 8);
      endsWithEpilog = at > begin && search_.IsEpilog(at);
      if (endsWithEpilog) return at + recordSize;
      if (next < time || (wasInside && next > header_.stopTime)) return at;
      wasInside = next >= header_.startTime && next <= header_.stopTime;
      if (at > begin) time = next;
    }
    return at;
  }
  std::size_t EndAtEpilog(std::size_t at, std::size_t limit, bool& isToEnd) const {
    for (isToEnd = false; limit - at >= recordSize && !isToEnd; at += recordSize)
      isToEnd = search_.IsEpilog(at);
    return at;
  }
  bool IsAtStart(std::size_t at) const { return Load<u64>(bytes_, at + 8) == header_.startTime; }

  FoundSection EventsFrom(const Section& section) {
    FoundSection found{.section = section, .isPlain = false};
    const std::size_t first = section.recordsAt;
    const bool isHalfWritten = section.count == 0 && (search_.EventRecordAt(first, section.kind) > 0 ||
                                                      (search_.IsTaskRecord(first) && IsAtStart(first)));
    const auto end = search_.EndOfEvents(section);
    if (end && !isHalfWritten && search_.MayEndAt(*end)) {
      if (section.count > 0) found.areas = {{first, *end}};
      return found;
    }
    found.isToEnd = false;
    std::size_t begin = section.recordsAt;
    const std::size_t limit = search_.NextFrom(begin).at;
    const bool hasProlog = limit - begin >= recordSize && search_.IsTaskRecord(begin) && IsAtStart(begin);
    if (hasProlog) found.areas.push_back({begin, begin + recordSize});
    CollectEvents({hasProlog ? begin + recordSize : begin, limit}, section.kind, 1, found.areas);
    return found;
  }

  // Adds all stretches of at least `least` event records.
  void CollectEvents(Span span, Kind kind, int least, std::vector<Span>& areas) const {
    for (std::size_t at = span.begin; at < span.end;) {
      std::size_t end = at;
      int count = 0;
      while (end < span.end) {
        const std::size_t size = search_.EventRecordAt(end, kind);
        if (size == 0 || size > span.end - end) break;
        end += size;
        ++count;
      }
      if (count >= least) AddArea(areas, {at, end});
      at = count >= least ? end : at + 1;
    }
  }
  static void AddArea(std::vector<Span>& areas, Span area) {
    if (!areas.empty() && areas.back().end == area.begin)
      areas.back().end = area.end;
    else
      areas.push_back(area);
  }

  void Lose(Span span) {
    if (!lost_.empty() && lost_.back().end == span.begin)
      lost_.back().end = span.end;
    else
      lost_.push_back(span);
  }

  // Testpoints and timing issues have one section each.
  void Add(FoundSection found) {
    if (found.section.kind == Kind::task) return found_.push_back(std::move(found));
    FoundSection& one = events_[found.section.kind == Kind::stamps ? 0 : 1];
    if (one.section.at == 0) {
      one = std::move(found);
      return;
    }
    for (const Span& area : found.areas) AddArea(one.areas, area);
    one.isToEnd = false;
  }

  // A record of a testpoint or a timing issue says all by itself: it needs no section, but a neighbour to be
  // believed.
  void AddOrphans() {
    for (const Kind kind : {Kind::stamps, Kind::events}) {
      if (kind == Kind::stamps ? !layout_.namesStamps : !layout_.hasEvents) continue;
      FoundSection orphans{.section = {.kind = kind}, .isPlain = false, .isToEnd = false};
      for (const Span& span : lost_) CollectEvents(span, kind, 2, orphans.areas);
      if (!orphans.areas.empty()) Add(std::move(orphans));
    }
    for (FoundSection& events : events_) {
      if (events.section.at == 0 && events.areas.empty()) continue;
      std::sort(events.areas.begin(), events.areas.end(),
                [](const Span& a, const Span& b) { return a.begin < b.begin; });
      found_.push_back(std::move(events));
    }
  }

  std::string_view bytes_;
  const Header& header_;
  Layout layout_;
  Search search_;
  std::vector<Span>& lost_;
  std::vector<FoundSection> found_;
  FoundSection events_[2] = {{.isPlain = false}, {.isPlain = false}};  // section.at is 0: not found
};

}  // namespace

std::vector<FoundSection> FindSections(std::string_view bytes, const Header& header, std::vector<Span>& lost,
                                       const Progress& progress) {
  const auto stated = SectionsOf(bytes, Layout(header.Version()), header.taskCount);
  const auto isWhole = [&](const Section& section) {
    return section.kind == Kind::task || Search(bytes, header).EndOfEvents(section);
  };
  const bool areWhole = stated && stated->end == bytes.size() &&
                        (!Check(bytes, progress).fault ||
                         std::all_of(stated->sections.begin(), stated->sections.end(), isWhole));
  if (!areWhole) return Finder(bytes, header, lost).Find(progress);
  std::vector<FoundSection> found;
  for (std::size_t i = 0; i < stated->sections.size(); ++i) {
    const bool isLast = i + 1 == stated->sections.size();
    const Section& section = stated->sections[i];
    const Span area{section.recordsAt, isLast ? stated->end : stated->sections[i + 1].at};
    found.push_back({.section = section, .isPlain = false});
    if (area.Size() > 0) found.back().areas = {area};
  }
  return found;
}

}  // namespace taskfile
