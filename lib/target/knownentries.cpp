// Mostly the entry of a record is next to the last one found, sometimes among a few of its time, seldom in a
// crowd.
#include "target/knownentries.h"

#include "target/target.h"

namespace {

// The id of what an entry is about. Goes by the type of the entry rather than through a virtual call, for a
// poll does this for each record.
u32 SubjectId(const _STLEntry& entry) {
  const _STLCategory* subject = entry.slots[0];
  if (!subject) return 0;
  if (entry.type == TLLogTestpoint) return static_cast<const STLTestpoint*>(subject)->id;
  if (entry.type == TLLogTimingIssue) return static_cast<const STLTimingIssue*>(subject)->GetId();
  return static_cast<const STLTask*>(subject)->id;
}

// A code that is not printable is not the id of its category, so the name that it would get tells. Otherwise
// a host that polls would collect the same timing issue again and again.
[[gnu::cold]] bool IsNamedAfter(const _STLEntry& timingIssue, u32 code) {
  return timingIssue.slots[0]->name == TimingIssueName(code);
}

// Whether an entry stands for a record of this type and id.
inline bool StandsFor(const _STLEntry& entry, ETLLogType type, u32 id) {
  if (entry.type != type) return false;
  if (SubjectId(entry) == id) return true;
  if (type != TLLogTimingIssue) [[likely]]
    return false;
  return IsNamedAfter(entry, id);
}

// Looks for an entry among a few. Called with one after the other; true ends the search.
struct Search {
  enum class Outcome { Absent, Found, TooMany };

  bool operator()(const _STLEntry& entry) {
    if (looked++ == thresholds::crowd)
      outcome = Outcome::TooMany;
    else if (StandsFor(entry, type, id))
      outcome = Outcome::Found;
    return outcome != Outcome::Absent;
  }

  ETLLogType type;
  u32 id;
  std::size_t looked = 0;
  Outcome outcome = Outcome::Absent;
};

}  // namespace

bool KnownEntries::Has(ETLLogType type, u64 time, u32 id, bool forward) {
  // Where a ring is read again, records come in the order of the entries that were made of them.
  const _STLEntry* next = held_.Next(forward);
  if (next && next->timestamp == time && StandsFor(*next, type, id)) {
    held_.Pass(next, forward);
    return true;
  }
  if (!crowdedTime_.IsAt(time)) {
    Search search{type, id};
    VisitAt(time, search);
    if (search.outcome != Search::Outcome::TooMany) return search.outcome == Search::Outcome::Found;
    BeginCrowd(time);
  }
  return IsInCrowd(type, id);
}

void KnownEntries::BeginCrowd(u64 time) {
  crowdedTime_.Begin(time);
  const auto add = [this](const _STLEntry& entry) {
    crowdedTime_.Add(entry);
    return false;
  };
  VisitAt(time, add);
}

bool KnownEntries::IsInCrowd(ETLLogType type, u32 id) const {
  if (crowdedTime_.HasId(type, id)) return true;
  if (type != TLLogTimingIssue) return false;
  const _STLCategory* named = log_.FindTimingIssue(TimingIssueName(id));
  return named && crowdedTime_.Has(type, named);
}
