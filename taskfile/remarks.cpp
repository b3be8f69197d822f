#include "taskfile/remarks.h"

#include <utility>

namespace taskfile {
namespace {

// Merges neighbouring runs in order until there is one.
void SortRuns(std::vector<u64>& times) {
  std::vector<std::size_t> ends;
  for (std::size_t i = 1; i < times.size(); ++i)
    if (times[i] < times[i - 1]) ends.push_back(i);
  ends.push_back(times.size());
  std::vector<u64> merged(ends.size() > 1 ? times.size() : 0);
  while (ends.size() > 1) {
    std::vector<std::size_t> longer;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < ends.size(); i += 2) {
      const std::size_t middle = ends[i];
      const std::size_t end = i + 1 < ends.size() ? ends[i + 1] : middle;
      const u64* const from = times.data();
      std::merge(from + begin, from + middle, from + middle, from + end, merged.data() + begin);
      longer.push_back(begin = end);
    }
    times.swap(merged);
    ends.swap(longer);
  }
}

// The times of records of one kind, taken one time after the other.
class Times {
 public:
  void Add(u64 time) { times_.push_back(time); }
  void Sort() { SortRuns(times_); }
  u64 Next() const { return next_ < times_.size() ? times_[next_] : UINT64_MAX; }
  bool AtEnd() const { return next_ == times_.size(); }
  u64 Take(u64 time) {
    const std::size_t begin = next_;
    while (next_ < times_.size() && times_[next_] == time) ++next_;
    return next_ - begin;
  }

 private:
  std::vector<u64> times_;
  std::size_t next_ = 0;
};

class Collector {
 public:
  Collector(const Header& header, Remarks& remarks) : header_(header), remarks_(remarks) {}

  void Add(const Record& record, Kind kind, bool isFirst, bool isLast) {
    if (IsDropped(record, isFirst, isLast)) {
      if (record.id != 0 || record.KoType() > koLastOfTask) remarks_.dropped.Add(record.time);
      return;
    }
    if (record.KoType() > koLastOfTask || kind != Kind::task) return NotePeriod(record);
    if (isFirst && record.KoType() == koSwitchedIn && record.id == 0 && record.time == header_.startTime)
      return remarks_.prologsRead.Add(record.time);
    NotePeriod(record);
    (record.KoType() == 0 ? events_ : record.KoType() <= koSwitchedIn ? came_ : left_).Add(record.time);
  }

  // Pairs the records of each time.
  void Pair() {
    for (Times* const times : {&events_, &came_, &left_}) times->Sort();
    while (!came_.AtEnd() || !left_.AtEnd()) {
      const u64 time = std::min(came_.Next(), left_.Next());
      const u64 came = came_.Take(time);
      const u64 left = left_.Take(time);
      while (!events_.AtEnd() && events_.Next() < time) events_.Take(events_.Next());
      if (left > 0) remarks_.eventsAtSwitch.Add(time, events_.Take(time));
      remarks_.withoutLeft.Add(time, came - std::min(came, left));
      remarks_.withoutCame.Add(time, left - std::min(came, left));
      if (came > 1 && left > 1) remarks_.ofOneTime.Add(time, std::max(came, left));
    }
  }

 private:
  bool IsDropped(const Record& record, bool isFirst, bool isLast) const {
    return isFirst ? IsProlog(record, header_) : isLast && record.time == header_.stopTime;
  }
  void NotePeriod(const Record& record) {
    if (record.time < header_.startTime || record.time > header_.stopTime) remarks_.outside.Add(record.time);
  }

  const Header& header_;
  Remarks& remarks_;
  Times events_;
  Times came_;
  Times left_;
};

}  // namespace

Remarks FindRemarks(std::string_view bytes, const Header& header, const std::vector<Section>& sections,
                    const Progress& progress) {
  Remarks remarks;
  Collector collector(header, remarks);
  const Layout layout(header.Version());
  for (const Section& section : sections) {
    std::size_t at = section.recordsAt;
    for (u32 i = 0; i < section.count; ++i) {
      const Record record = RecordAt(bytes, at, layout);
      collector.Add(record, section.kind, i == 0, i + 1 == section.count);
      at += record.size;
    }
    progress(static_cast<double>(at) / static_cast<double>(bytes.size()));
  }
  collector.Pair();
  return remarks;
}

}  // namespace taskfile
