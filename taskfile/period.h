// The period of a log as its sections tell it.
#pragma once

#include <map>
#include <optional>

#include "taskfile/format.h"

namespace taskfile {

// Every section begins at the start time, with a prolog or an entry; every section of a task ends with an
// epilog at the stop time. Where none is at the header's time, and most of them agree on another, the header
// is wrong.
class PeriodVotes {
 public:
  // In a file that is damaged, what stands in the place of a prolog votes as well.
  explicit PeriodVotes(const Header& header, bool isDamaged = false)
      : header_(header), isDamaged_(isDamaged) {}

  // The first and the last record of a section, and those beside them; it has two or more.
  void Add(Kind kind, const Record& first, const Record& second, const Record& lastButOne,
           const Record& last) {
    Add(start_, first, second.KoType(), prologKoTypes, header_.startTime);
    if (kind == Kind::task) Add(stop_, last, lastButOne.KoType(), epilogKoTypes, header_.stopTime);
  }

  std::optional<u64> Start() const { return Winner(start_); }
  std::optional<u64> Stop() const { return Winner(stop_); }

 private:
  struct OfTime {
    u64 sections = 0;
    u64 prologs = 0;  // or epilogs: what the format has at the ends of a section
  };
  struct Votes {
    std::map<u64, OfTime> byTime = {};
    u64 all = 0;
    bool headerIsRight = false;

    std::optional<u64> Most(u64 OfTime::*count) const {
      const auto most = std::max_element(byTime.begin(), byTime.end(), [&](const auto& a, const auto& b) {
        return a.second.*count < b.second.*count;
      });
      if (headerIsRight || most == byTime.end()) return std::nullopt;
      const bool isEnough = most->second.prologs > 0 && most->second.*count * 2 >= all;
      return isEnough ? std::optional(most->first) : std::nullopt;
    }
  };

  static void Add(Votes& votes, const Record& end, u8 neighbour, const u8 (&koTypes)[9], u64 stated) {
    ++votes.all;
    votes.headerIsRight |= end.time == stated;
    OfTime& ofTime = votes.byTime[end.time];
    ++ofTime.sections;
    ofTime.prologs += end.id == 0 && neighbour < 9 && end.KoType() == koTypes[neighbour] ? 1 : 0;
  }
  std::optional<u64> Winner(const Votes& votes) const {
    const auto time = votes.Most(&OfTime::prologs);
    return time || !isDamaged_ ? time : votes.Most(&OfTime::sections);
  }

  const Header& header_;
  bool isDamaged_;
  Votes start_;
  Votes stop_;
};

}  // namespace taskfile
