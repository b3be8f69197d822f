// Makes an entry of a record.
#include "target/acquisition.h"
#include "target/discovery.h"
#include "target/record.h"

namespace {

// The id of what an entry is about, of which its type tells the kind; asked directly, for polling asks it for
// each record again.
u32 SubjectId(const _STLEntry& entry) {
  const _STLCategory* subject = entry.slots[0];
  if (!subject) return 0;
  if (entry.type == TLLogTestpoint) return static_cast<const STLTestpoint*>(subject)->id;
  if (entry.type == TLLogTimingIssue) return static_cast<const STLTimingIssue*>(subject)->GetId();
  return static_cast<const STLTask*>(subject)->id;
}

// A code that is not printable is not the id of its category, so it is recognised by the name that it would
// be given; a host that polls would otherwise collect the same timing issue again and again.
[[gnu::cold]] bool IsNamedAfter(const _STLEntry& timingIssue, u32 code) {
  return timingIssue.slots[0]->name == TimingIssueName(code);
}

// Whether an entry stands for a record of this type and id.
bool StandsFor(const _STLEntry& entry, ETLLogType type, u32 id) {
  if (entry.type != type) return false;
  return SubjectId(entry) == id || (type == TLLogTimingIssue && IsNamedAfter(entry, id));
}

}  // namespace

bool _STLTaskLog::AddEntry(const u32* record, bool forward, Acquisition& acquisition) {
  const ETLLogType type = RecordType(record[0]);
  if (type == markerType) return true;
  const u32 id = record[1];
  const u64 time = ExtendTick(acquisition.time, RecordTick(record[0]), acquisition.timeBits, forward);
  acquisition.time = time;

  if (IsHeld(type, time, id, forward, acquisition)) return false;
  _STLEntry* entry = acquisition.added.Add(type, time, forward);
  entry->slots[0] = FindOrFetchCategory(id, type, acquisition);
  if (acquisition.crowdedTime.IsAt(time)) acquisition.crowdedTime.Add(*entry);
  return false;
}

bool _STLTaskLog::IsHeld(ETLLogType type, u64 time, u32 id, bool forward, Acquisition& acquisition) const {
  // Where a ring is read again, records come in the order of the entries that were made of them.
  const _STLEntry* next = acquisition.held.Next(forward);
  if (next && next->timestamp == time && StandsFor(*next, type, id)) {
    acquisition.held.Pass(next, forward);
    return true;
  }
  if (acquisition.crowdedTime.IsAt(time)) return IsInCrowd(type, id, acquisition.crowdedTime);
  std::size_t looked = 0;
  const bool found = acquisition.AnyAt(time, [&](const _STLEntry& entry) {
    return ++looked > CrowdedTime::crowd || StandsFor(entry, type, id);
  });
  if (looked <= CrowdedTime::crowd) return found;
  acquisition.BeginCrowd(time);
  return IsInCrowd(type, id, acquisition.crowdedTime);
}

bool _STLTaskLog::IsInCrowd(ETLLogType type, u32 id, const CrowdedTime& crowd) const {
  if (crowd.HasId(type, id)) return true;
  if (type != TLLogTimingIssue) return false;
  const _STLCategory* named = FindTimingIssue(TimingIssueName(id));
  return named && crowd.HasTimingIssue(named);
}
