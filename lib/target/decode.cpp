// Puts a record into the working queue of an append.
#include <algorithm>

#include "model/model.h"
#include "target/discovery.h"
#include "target/record.h"

namespace {

// Whether an entry stands for a record of this type and id. A code that is not printable is not the id of
// its category, so it is recognised by the name that it would be given; a host that polls would otherwise
// collect the same timing issue again and again.
bool StandsFor(const _STLEntry& entry, ETLLogType type, u32 id) {
  if (entry.type != type) return false;
  const _STLCategory* category = entry.slots[0];
  if ((category ? category->GetId() : 0) == id) return true;
  return type == TLLogTimingIssue && category && category->name == TimingIssueName(id);
}

}  // namespace

bool _STLTaskLog::AddEntry(const u32* record, u64& time, EntryQueue& queue, bool& tasksFetched,
                           bool& testpointsFetched, u32& fetchError, int timeBits, const std::string& target,
                           bool forward) {
  const ETLLogType type = RecordType(record[0]);
  if (type == markerType) return true;
  const u32 id = record[1];
  time = ExtendTick(time, RecordTick(record[0]), timeBits, forward);

  const auto [begin, end] = std::equal_range(queue.begin(), queue.end(), time, CompareEntriesByTime());
  if (std::any_of(begin, end, [&](const _STLEntry& entry) { return StandsFor(entry, type, id); }))
    return false;

  // Read backward, records of one time arrive newest first, so each goes before those that are there.
  const auto entry = queue.insert(forward ? end : begin, _STLEntry(type, time));
  entry->slots[0] = FindOrFetchCategory(id, type, tasksFetched, testpointsFetched, fetchError, target);
  return false;
}
