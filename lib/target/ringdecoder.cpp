// From the cells of a ring to entries, record by record.
#include "target/ringdecoder.h"

u32 RingDecoder::Decode() {
  acquisition_.time = ring_.ReferenceTime();
  for (u32 slot = 0; slot < laps_.marker; ++slot)
    if (!DecodeSlot(slot, true)) return TLErrCanceled;
  acquisition_.time = ring_.ReferenceTime();
  for (u32 slot = ring_.SlotCount(); slot > laps_.marker + 1 && !ring_.IsMarker(slot - 1);)
    if (!DecodeSlot(--slot, false)) return TLErrCanceled;
  acquisition_.added.Close();
  return TL_OK;
}

// False when the caller asked to stop.
bool RingDecoder::DecodeSlot(u32 slot, bool forward) {
  log_.AddEntry(ring_.Slot(slot), forward, acquisition_);
  ++recordsDecoded_;
  return !progress_.IsWanted() || !progress_.CanceledAt(Fraction());
}

// The order of these operations is part of the interface: callers see the same doubles everywhere.
double RingDecoder::Fraction() const {
  double fetched = fraction::ringRead + (acquisition_.tasksFetched ? fraction::tasksFetched : 0.0);
  fetched += acquisition_.testpointsFetched ? fraction::testpointsFetched : 0.0;
  double decoded = recordsDecoded_ * fraction::halfOfDecoding;
  decoded += decoded;
  decoded /= ring_.WordCount();
  return fetched + decoded;
}

bool _STLTaskLog::AddEntry(const u32* record, bool forward, Acquisition& acquisition) {
  const ETLLogType type = RecordType(record[0]);
  if (type == markerType) return true;
  const u32 id = record[1];
  const u64 time = ExtendTick(acquisition.time, RecordTick(record[0]), acquisition.timeBits, forward);
  acquisition.time = time;

  if (acquisition.known.Has(type, time, id, forward)) return false;
  _STLEntry* entry = acquisition.added.Add(type, time, forward);
  entry->slots[0] = FindOrFetchCategory(id, type, acquisition);
  acquisition.known.Follow(*entry);
  return false;
}
