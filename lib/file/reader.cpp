// Appends a TaskLog file to a log.
#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "file/entrymap.h"
#include "file/eventcategories.h"
#include "file/format.h"
#include "file/stream.h"
#include "model/model.h"

namespace {

template <class Integer>
Integer ReadLE(Source& source) {
  return LoadLE<Integer>(source.Take(sizeof(Integer)));
}

// Valid until the next read. `certain` tells how many bytes follow the string in a file that is whole.
std::string_view ReadString(Source& source, u64 certain) {
  constexpr std::size_t longest = 256;
  const u32 size = ReadLE<u32>(source);
  if (size > longest) throw u32{TLErrFileInvalid};
  const auto* text = reinterpret_cast<const char*>(source.Take(size, size + certain));
  return {text, strnlen(text, std::min<std::size_t>(size, longest - 1))};
}

// Returns the effective version: what the file holds, as far as a reader of its base version need not care.
u32 ReadVersion(Source& source) {
  if (std::memcmp(source.Take(fileMarkerSize), fileMarker, fileMarkerSize) != 0) throw u32{TLErrFileInvalid};
  const u16 base = ReadLE<u16>(source);
  const u16 version = ReadLE<u16>(source);
  if (base > baseVersion) throw u32{TLErrFileVersion};
  return std::max(base, version);
}

struct Record {
  u8 koType;
  u32 id;
  u64 timestamp;
  std::string_view name;  // valid until the next read
};

// `following` tells how many records follow this one in its section.
Record ReadRecord(Source& source, u32 version, u32 following) {
  const u64 certain = u64{recordSize} * following;
  const u8* bytes = source.Take(recordSize, recordSize + certain);
  Record record{bytes[0], LoadLE<u32>(bytes + 4), LoadLE<u64>(bytes + 8), {}};  // bytes 1 to 3 are free
  if ((record.koType == koTestpoint && version > versionBeforeStampNames) ||
      (record.koType == koTimingIssue && version > versionBeforeEvents))
    record.name = ReadString(source, certain);
  return record;
}

// A prolog or epilog states what a task did at the ends of the log; it is no entry.
bool IsPrologOrEpilog(const Record& record, u32 index, u32 count, const _STLTaskLog& log) {
  if (index == 0)
    return record.timestamp == log.startTime && record.koType >= koSwitchedOut1 &&
           record.koType <= koSwitchedOut5;
  return index == count - 1 && record.timestamp == log.stopTime;
}

// Reads a header and the sections that it calls for.
void ReadSections(Source& source, _STLTaskLog& log, _STLTaskLog::EntryMap& map) {
  const u32 version = ReadVersion(source);
  log.startTime = ReadLE<u64>(source);
  log.stopTime = ReadLE<u64>(source);
  const u32 tickRate = ReadLE<u32>(source);
  const u32 divisor = ReadLE<u32>(source);
  if (divisor == 0) throw u32{TLErrFileInvalid};
  log.ticksPerSecond = tickRate / divisor;

  const u32 taskCount = ReadLE<u32>(source);
  for (u32 i = 0; i < taskCount; ++i) log.ReadTask(source, map, TLCatTask, version);
  if (version > versionBeforeStamps) log.ReadTask(source, map, TLCatTestpoint, version);
  if (version > versionBeforeEvents) log.ReadTask(source, map, TLCatTimingIssue, version);
}

}  // namespace

void _STLTaskLog::ReadTask(Source& source, EntryMap& map, ETLCatType kind, u32 version) {
  const std::string name(ReadString(source, 0));
  const u32 priority = ReadLE<u32>(source);
  const u32 timeSlice = ReadLE<u32>(source);
  const u32 count = ReadLE<u32>(source);
  map.BeginSection(kind == TLCatTask ? FindOrCreateTask(name, priority, static_cast<i32>(timeSlice))
                                     : nullptr);

  EventCategories categoriesOfEvents(*this);
  for (u32 i = 0; i < count; ++i) {
    const Record record = ReadRecord(source, version, count - 1 - i);
    if (IsPrologOrEpilog(record, i, count, *this)) continue;
    if (kind == TLCatTask && record.koType <= koSwitchedOut5)
      map.AddTaskRecord(record.koType, record.timestamp, version > versionBeforeTaskIds ? record.id : 0);
    else if (kind == TLCatTestpoint && record.koType == koTestpoint)
      map.AddEvent(koTestpoint, record.timestamp, *categoriesOfEvents.Testpoint(record.name, record.id));
    else if (kind == TLCatTimingIssue && record.koType == koTimingIssue)
      map.AddEvent(koTimingIssue, record.timestamp, *categoriesOfEvents.TimingIssue(record.name));
  }
}

// What is read before a failure stays: times, categories, task ids. The entries change only at the end.
u32 _STLTaskLog::AppendFromFile(const char* path) {
  const Stream stream(path, "rbe");  // closed on every path out
  if (!stream.IsOpen()) return TLErrFileOpen;
  EntryMap map(*this);
  if (!PagesMove()) map.Expect(stream.SizeBytes() / recordSize);
  u32 status = TL_OK;
  try {
    Source source(stream.File());
    ReadSections(source, *this, map);
  } catch (u32 failure) {
    status = failure;
  } catch (const std::bad_alloc&) {
    status = TLErrOutOfMemory;
  }
  const NewSeries entriesOfFile = map.Pair();
  if (status == TL_OK) TakeNewEntries({}, entriesOfFile);
  return status;
}
