// Which records of a section that was found are kept.
#pragma once

#include <vector>

#include "taskfile/period.h"
#include "taskfile/salvage.h"

namespace taskfile {

// Judges sections by one header; adds to the votes on its period and to the times that are lost.
class Keeper {
 public:
  Keeper(std::string_view bytes, const Header& header, PeriodVotes& votes, std::vector<LostTime>& lostTimes)
      : bytes_(bytes), header_(header), votes_(votes), lostTimes_(lostTimes) {}

  KeptSection Keep(const FoundSection& found);

 private:
  struct Summary {
    std::size_t all = 0;
    std::size_t kept = 0;
    Record ends[4] = {};    // of those kept the first two and the last two
    bool hasFirst = false;  // the first and the last of the section are kept
    bool hasLast = false;
    bool inOrder = true;
  };

  // Calls visit(record, offset, number) with each record of a section.
  template <class Visit>
  void ForEachRecord(const FoundSection& found, Visit visit) const {
    const Layout layout(found.isPlain ? 0 : header_.Version());
    std::size_t number = 0;
    for (const Span& area : found.areas)
      for (std::size_t at = area.begin; at < area.end; ++number) {
        const Record record = RecordAt(bytes_, at, layout);
        visit(record, at, number);
        at += record.size;
      }
  }
  static bool IsFirst(const FoundSection& found, std::size_t at) {
    return at == found.section.recordsAt && found.areas.front().begin == at;
  }
  static bool IsLast(const FoundSection& found, std::size_t at, const Record& record) {
    return found.isToEnd && at + record.size == found.areas.back().end;
  }

  void DropMisfits(const FoundSection& found);
  Summary Summarize(const FoundSection& found) const;
  template <class Visit>
  void ForEachBetween(const FoundSection& found, const KeptSection& kept, std::size_t count,
                      Visit visit) const;
  void DropOutOfOrder(const FoundSection& found, const KeptSection& kept, const Summary& summary);
  void SetEnds(const FoundSection& found, const Summary& summary, KeptSection& kept) const;
  void Vote(const KeptSection& kept, const Summary& summary) const;
  void TakeSpans(const FoundSection& found, KeptSection& kept);

  std::string_view bytes_;
  const Header& header_;
  PeriodVotes& votes_;
  std::vector<LostTime>& lostTimes_;
  std::vector<bool> keeps_;  // by number of the record
};

}  // namespace taskfile
