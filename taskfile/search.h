// Finds the sections of a damaged file: docs/repair.md, How sections are found.
#pragma once

#include <optional>

#include "taskfile/format.h"

namespace taskfile {

class Search {
 public:
  Search(std::string_view bytes, const Header& header)
      : bytes_(bytes), header_(header), layout_(header.Version()) {}

  // The section whose header begins at an offset where one is due, also when length or end of its name are
  // damaged; empty when there is none.
  std::optional<Section> DueAt(std::size_t at);
  // Whether a section may begin here, or the file ends.
  bool MayEndAt(u64 at);
  // The first section at or behind an offset that is plausible as a whole; `at` is the end of the file for
  // none. Asked for offsets that do not fall, all calls together go over the file once.
  const Section& NextFrom(std::size_t at);

  // Where a stretch of records of a task ends that begins at an offset: all plausible, in the order of time.
  std::size_t EndOfStretch(std::size_t at);
  bool IsTaskRecord(std::size_t at) const;
  // Whether this is a record of testpoints or timing issues, as a writer leaves it; its size, else 0.
  std::size_t EventRecordAt(std::size_t at, Kind kind) const;
  bool IsEpilog(std::size_t at) const;
  // Where a section of testpoints or timing issues ends, when all its records are as a writer leaves them.
  std::optional<std::size_t> EndOfEvents(const Section& section) const;

 private:
  std::optional<Section> HeaderAt(std::size_t at) const;
  Kind KindOf(const Section& section) const;
  bool IsRecordInPeriod(std::size_t at) const;
  bool BeginsWell(const Section& section);
  bool IsWhole(const Section& section);
  bool IsCertain(const Section& section);
  Record Plain(std::size_t at) const { return RecordAt(bytes_, at, Layout(0)); }

  std::string_view bytes_;
  const Header& header_;
  Layout layout_;
  std::optional<Section> next_;  // what NextFrom() found last
  // For each place within a record, the last stretch that was walked: no byte is walked twice.
  struct Stretch {
    std::size_t begin = 1;
    std::size_t end = 0;
  } stretches_[recordSize];
};

}  // namespace taskfile
