// Appends a TaskLog file to a log.
#include <algorithm>
#include <cstring>
#include <string>

#include "file/entrymap.h"
#include "file/format.h"
#include "model/model.h"

namespace {

void Read(std::FILE* file, void* bytes, std::size_t size) {
  if (size == 0 || std::fread(bytes, 1, size, file) == size) return;
  throw u32{std::ferror(file) ? TLErrFileRead : TLErrFileInvalid};
}

template <class Integer>
Integer ReadLE(std::FILE* file) {
  u8 bytes[sizeof(Integer)];
  Read(file, bytes, sizeof bytes);
  u64 value = 0;
  for (std::size_t i = sizeof bytes; i-- > 0;) value = value << 8 | bytes[i];
  return static_cast<Integer>(value);
}

std::string ReadString(std::FILE* file) {
  char buffer[256];
  const u32 size = ReadLE<u32>(file);
  if (size > sizeof buffer) throw u32{TLErrFileInvalid};
  Read(file, buffer, size);
  return std::string(buffer, strnlen(buffer, std::min<std::size_t>(size, 255)));
}

// Returns the effective version: what the file holds, as far as a reader of its base version need not care.
u32 ReadVersion(std::FILE* file) {
  char marker[fileMarkerSize];
  Read(file, marker, sizeof marker);
  if (std::memcmp(marker, fileMarker, sizeof marker) != 0) throw u32{TLErrFileInvalid};
  const u16 base = ReadLE<u16>(file);
  const u16 version = ReadLE<u16>(file);
  if (base > baseVersion) throw u32{TLErrFileVersion};
  return std::max(base, version);
}

struct Record {
  u8 koType;
  u32 id;
  u64 timestamp;
  std::string name;
};

Record ReadRecord(std::FILE* file, u32 version) {
  Record record{};
  record.koType = static_cast<u8>(ReadLE<u32>(file));  // the upper bytes are free
  record.id = ReadLE<u32>(file);
  record.timestamp = ReadLE<u64>(file);
  if ((record.koType == koTestpoint && version > versionBeforeStampNames) ||
      (record.koType == koTimingIssue && version > versionBeforeEvents))
    record.name = ReadString(file);
  return record;
}

// A prolog or epilog states what a task did at the ends of the log; it is no entry.
bool IsPrologOrEpilog(const Record& record, u32 index, u32 count, const _STLTaskLog& log) {
  if (index == 0)
    return record.timestamp == log.startTime && record.koType >= koSwitchedOut1 &&
           record.koType <= koSwitchedOut5;
  return index == count - 1 && record.timestamp == log.stopTime;
}

// The task ran from this record on: slot 0.
_STLEntry* SwitchIn(_STLTaskLog::EntryMap& map, const Record& record, STLTask* task) {
  _STLEntry* entry = map.FindOrCreateEntryWithEmptyTask(record.timestamp, 0);
  if (record.koType == koSwitchedIn3 && entry->type == TLLogSwitch4) entry->type = TLLogSwitch3;
  entry->slots[0] = task;
  return entry;
}

// The task ran until this record: slot 1. Its record knows the type of the switch.
_STLEntry* SwitchOut(_STLTaskLog::EntryMap& map, const Record& record, STLTask* task) {
  _STLEntry* entry = map.FindOrCreateEntryWithEmptyTask(record.timestamp, 1);
  if (record.koType == koSwitchedOut1) entry->type = TLLogSwitch1;
  if (record.koType == koSwitchedOut0) entry->type = TLLogSwitch0;
  if (record.koType == koSwitchedOut5) entry->type = TLLogSwitch5;
  entry->slots[1] = task;
  return entry;
}

_STLEntry* InsertEntry(_STLTaskLog::EntryMap& map, ETLLogType type, u64 timestamp, _STLCategory* subject) {
  _STLEntry entry(type, timestamp);
  entry.slots[0] = subject;
  return map.Insert(entry);
}

void AddTaskRecord(_STLTaskLog::EntryMap& map, const Record& record, STLTask* task, u32 version) {
  _STLEntry* entry = nullptr;
  if (record.koType == koTaskEvent)
    entry = InsertEntry(map, TLLogTaskEvent, record.timestamp, task);
  else if (record.koType <= koSwitchedIn)
    entry = SwitchIn(map, record, task);
  else if (record.koType <= koSwitchedOut5)
    entry = SwitchOut(map, record, task);
  if (!entry || version <= versionBeforeTaskIds || record.id == 0) return;
  // The id is that of the task in slot 0, which need not be the section's. Task sections fill slot 0 with
  // tasks alone.
  if (entry->slots[0] && entry->slots[0]->GetType() == TLCatTask)
    static_cast<STLTask*>(entry->slots[0])->id = record.id;
}

}  // namespace

void _STLTaskLog::ReadTask(std::FILE* file, EntryMap& map, ETLCatType kind, u32 version) {
  const std::string name = ReadString(file);
  const u32 priority = ReadLE<u32>(file);
  const u32 timeSlice = ReadLE<u32>(file);
  const u32 count = ReadLE<u32>(file);
  STLTask* task = kind == TLCatTask ? FindOrCreateTask(name, priority, static_cast<i32>(timeSlice)) : nullptr;
  for (u32 i = 0; i < count; ++i) {
    const Record record = ReadRecord(file, version);
    if (IsPrologOrEpilog(record, i, count, *this)) continue;
    if (task)
      AddTaskRecord(map, record, task, version);
    else if (kind == TLCatTestpoint && record.koType == koTestpoint)
      InsertEntry(map, TLLogTestpoint, record.timestamp, FindOrCreateTestpoint(record.name, record.id));
    else if (kind == TLCatTimingIssue && record.koType == koTimingIssue)
      InsertEntry(map, TLLogTimingIssue, record.timestamp, FindOrCreateTimingIssue(record.name));
  }
}

// What is read before a failure stays: times, categories, task ids. The entries change only at the end.
void _STLTaskLog::ReadFile(std::FILE* file) {
  const u32 version = ReadVersion(file);
  startTime = ReadLE<u64>(file);
  stopTime = ReadLE<u64>(file);
  const u32 tickRate = ReadLE<u32>(file);
  const u32 divisor = ReadLE<u32>(file);
  if (divisor == 0) throw u32{TLErrFileInvalid};
  ticksPerSecond = tickRate / divisor;

  EntryMap map;
  const u32 taskCount = ReadLE<u32>(file);
  for (u32 i = 0; i < taskCount; ++i) ReadTask(file, map, TLCatTask, version);
  if (version > versionBeforeStamps) ReadTask(file, map, TLCatTestpoint, version);
  if (version > versionBeforeEvents) ReadTask(file, map, TLCatTimingIssue, version);
  Merge(map);
  FillInOldTasks();
}

// Among equal times the log's entries come first.
void _STLTaskLog::Merge(const EntryMap& map) {
  std::vector<_STLEntry> merged;
  merged.reserve(entries.size() + map.Size());
  auto old = entries.begin();
  for (const auto& [timestamp, entry] : map) {
    while (old != entries.end() && old->timestamp <= timestamp) merged.push_back(*old++);
    merged.push_back(entry);
  }
  merged.insert(merged.end(), old, entries.end());
  entries = std::move(merged);
}

u32 _STLTaskLog::AppendFromFile(const char* path) {
  const FilePtr file(std::fopen(path, "rb"));  // closed on every path out
  if (!file) return TLErrFileOpen;
  try {
    ReadFile(file.get());
    return TL_OK;
  } catch (u32 status) {
    return status;
  }
}
