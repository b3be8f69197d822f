// From the cells of a ring to entries, record by record.
#include "target/ringdecoder.h"

u32 RingDecoder::Decode() {
  acquisition_.time = ring_.ReferenceTime();
  for (u32 cell = 0; cell < laps_.marker; ++cell)
    if (!DecodeCell(cell, true)) return TLErrCanceled;
  acquisition_.time = ring_.ReferenceTime();
  for (u32 cell = ring_.CellCount(); cell > laps_.marker + 1 && !ring_.IsMarker(cell - 1);)
    if (!DecodeCell(--cell, false)) return TLErrCanceled;
  acquisition_.added.Close();
  return TL_OK;
}

// False when the caller asked to stop.
bool RingDecoder::DecodeCell(u32 cell, bool forward) {
  log_.AddEntry(ring_.Cell(cell), forward, acquisition_);
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
