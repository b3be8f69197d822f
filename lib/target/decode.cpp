// Makes an entry of a record.
#include "target/acquisition.h"
#include "target/discovery.h"
#include "target/record.h"

namespace {

// Whether an entry stands for a record of this type and id. A code that is not printable is not the id of its
// category, so it is recognised by the name that it would be given; a host that polls would otherwise collect
// the same timing issue again and again.
bool StandsFor(const _STLEntry& entry, ETLLogType type, u32 id) {
  if (entry.type != type) return false;
  const _STLCategory* category = entry.slots[0];
  if ((category ? category->GetId() : 0) == id) return true;
  return type == TLLogTimingIssue && category && category->name == TimingIssueName(id);
}

}  // namespace

bool _STLTaskLog::AddEntry(const u32* record, bool forward, Acquisition& acquisition) {
  const ETLLogType type = RecordType(record[0]);
  if (type == markerType) return true;
  const u32 id = record[1];
  const u64 time = ExtendTick(acquisition.time, RecordTick(record[0]), acquisition.timeBits, forward);
  acquisition.time = time;

  if (IsHeld(type, time, id, acquisition)) return false;
  _STLEntry* entry = acquisition.added.Add(_STLEntry(type, time), forward);
  entry->slots[0] = FindOrFetchCategory(id, type, acquisition);
  if (acquisition.crowdedTime.IsAt(time)) acquisition.crowdedTime.Add(*entry);
  return false;
}

bool _STLTaskLog::IsHeld(ETLLogType type, u64 time, u32 id, Acquisition& acquisition) const {
  CrowdedTime& crowded = acquisition.crowdedTime;
  if (!crowded.IsAt(time)) {
    std::size_t looked = 0;
    const bool found = acquisition.AnyAt(time, [&](const _STLEntry& entry) {
      return ++looked > CrowdedTime::crowd || StandsFor(entry, type, id);
    });
    if (looked <= CrowdedTime::crowd) return found;
    crowded.Begin(time);
    acquisition.AnyAt(time, [&](const _STLEntry& entry) { return crowded.Add(entry), false; });
  }
  if (crowded.HasId(type, id)) return true;
  if (type != TLLogTimingIssue) return false;
  const _STLCategory* named = FindTimingIssue(TimingIssueName(id));
  return named && crowded.HasTimingIssue(named);
}
