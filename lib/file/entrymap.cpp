// Makes entries of records that arrive in the order of time, and of the file among equal times.
#include "file/entrymap.h"

void _STLTaskLog::EntryMap::BeginSection(STLTask* task) {
  if (task && idMarks_.size() <= task->index) idMarks_.resize(task->index + 1);
  sorter_.BeginSection(task);
}

void _STLTaskLog::EntryMap::Add(const Record& record) {
  // Each record makes one entry at most.
  if (sorter_.RoomLeft() == 0) log_.entries.Spare(sorter_.MakeRoom());
  sorter_.Add(record);
}

void _STLTaskLog::EntryMap::Expect(u64 count) {
  try {
    if (count > SIZE_MAX) return;
    sorter_.Expect(static_cast<std::size_t>(count));
    log_.entries.Spare(static_cast<std::size_t>(count));
  } catch (const std::bad_alloc&) {
    // Then it comes bit by bit.
  }
}

NewSeries _STLTaskLog::EntryMap::Pair() {
  first_ = last_ = log_.entries.end();
  sorter_.ForEachByTime(
      [this](const Record& record, STLTask* task, std::size_t number) { PairRecord(record, task, number); });
  SetTaskIds();
  return {first_, last_};
}

void _STLTaskLog::EntryMap::PairRecord(const Record& record, STLTask* task, std::size_t number) {
  BeginTime(record.timestamp);
  if (record.koType == koTestpoint || record.koType == koTimingIssue) {
    const ETLLogType type = record.koType == koTestpoint ? TLLogTestpoint : TLLogTimingIssue;
    Insert(type, record.timestamp, log_.categories[record.value]);
    return;
  }
  const _STLEntry* entry = PairTaskRecord(record, task);
  if (record.value == 0 || !entry->slots[0]) return;
  // The id is that of the task in slot 0, which need not be the section's; the last in the file counts.
  IdMark& mark = idMarks_[entry->slots[0]->index];
  if (mark.after <= number) mark = {number + 1, record.value};
}

// A record tells which slot of its entry the task holds. That of the task in slot 1 knows the type of the
// switch; type 4 stands until it is known.
_STLEntry* _STLTaskLog::EntryMap::PairTaskRecord(const Record& record, STLTask* task) {
  if (record.koType == koTaskEvent) return Insert(TLLogTaskEvent, record.timestamp, task);
  const bool switchedIn = record.koType <= koSwitchedIn;
  _STLEntry* entry = FindOrCreateEntryWithEmptyTask(record.timestamp, switchedIn ? 0 : 1);
  entry->slots[switchedIn ? 0 : 1] = task;
  if (record.koType == koSwitchedIn3 && entry->type == TLLogSwitch4) entry->type = TLLogSwitch3;
  if (record.koType == koSwitchedOut1) entry->type = TLLogSwitch1;
  if (record.koType == koSwitchedOut0) entry->type = TLLogSwitch0;
  if (record.koType == koSwitchedOut5) entry->type = TLLogSwitch5;
  return entry;
}

// The first entry of the time whose slot is empty. Slots only ever fill, so the search goes on where it ended
// the last time.
_STLEntry* _STLTaskLog::EntryMap::FindOrCreateEntryWithEmptyTask(u64 timestamp, u32 slot) {
  _STLEntry*& candidate = firstEmpty_[slot];
  while (candidate != last_ && candidate->slots[slot]) ++candidate;
  return candidate != last_ ? candidate : Insert(TLLogSwitch4, timestamp, nullptr);
}

_STLEntry* _STLTaskLog::EntryMap::Insert(ETLLogType type, u64 timestamp, _STLCategory* subject) {
  *last_ = _STLEntry(type, timestamp);
  last_->slots[0] = subject;
  return last_++;
}

void _STLTaskLog::EntryMap::BeginTime(u64 timestamp) {
  if (last_ == first_ || last_[-1].timestamp != timestamp) firstEmpty_[0] = firstEmpty_[1] = last_;
}

void _STLTaskLog::EntryMap::SetTaskIds() {
  for (std::size_t i = 0; i < idMarks_.size(); ++i)
    if (idMarks_[i].after > 0) static_cast<STLTask*>(log_.categories[i])->id = idMarks_[i].id;
}
