// Saves a log as a TaskLog file.
#include <memory>
#include <new>
#include <string>

#include "file/format.h"
#include "file/sectionindex.h"
#include "file/stream.h"
#include "model/model.h"

namespace {

template <class Integer>
void WriteLE(Sink& sink, Integer value) {
  u8 bytes[sizeof value];
  StoreLE(bytes, value);
  sink.Put(bytes, sizeof bytes);
}

void WriteString(Sink& sink, const std::string& text) {
  WriteLE(sink, static_cast<u32>(text.size() + 1));
  sink.Put(text.c_str(), text.size() + 1);
}

// Writes one section: header, records with their prolog and epilog, and at the end the record count into the
// header.
class CTaskWriter {
 public:
  CTaskWriter(std::FILE* file, const _STLTaskLog* log)
      : file_(file), sink_(file), startTime_(log->startTime), stopTime_(log->stopTime) {}

  void WriteTaskBegin(const std::string& name, u32 priority, u32 timeSlice);
  // `task` is the section's task; null in the Stamps and Events sections.
  void WriteEntry(const _STLEntry* entry, const _STLCategory* task);
  void WriteLastEntry();
  void WriteTaskEnd();

 private:
  void WriteRecord(u8 koType, u32 id, u64 timestamp) {
    u8 bytes[recordSize];
    StoreLE(bytes, u32{koType});
    StoreLE(bytes + 4, id);
    StoreLE(bytes + 8, timestamp);
    sink_.Put(bytes, sizeof bytes);
    ++recordsWritten_;
  }
  void WriteProlog();

  std::FILE* file_;  // borrowed
  Sink sink_;
  u64 startTime_;  // ticks
  u64 stopTime_;   // ticks
  std::fpos_t countPosition_ = {};
  u32 recordsWritten_ = 0;
  u8 lastKoType_ = 0;  // of an entry's record
};

void CTaskWriter::WriteTaskBegin(const std::string& name, u32 priority, u32 timeSlice) {
  WriteString(sink_, name);
  WriteLE(sink_, priority);
  WriteLE(sink_, timeSlice);
  sink_.Flush();
  if (std::fgetpos(file_, &countPosition_) != 0) throw u32{TLErrFileWrite};
  WriteLE(sink_, u32{0});
}

// States what the task did from the start time to the record that comes first.
void CTaskWriter::WriteProlog() {
  static constexpr u8 prologKoTypes[] = {3, 3, 4, 3, 2, 2, 2, 3, 3};
  WriteRecord(prologKoTypes[lastKoType_], 0, startTime_);
}

void CTaskWriter::WriteEntry(const _STLEntry* entry, const _STLCategory* task) {
  // By entry type, first for a task in slot 1 or no task, then for the task in slot 0.
  static constexpr u8 loggerKoTypes[] = {5, 2, 3, 2, 0, 0, 4, 1, 4, 2, 6, 2, 7, 0, 8, 0};
  const _STLCategory* subject = entry->slots[0];
  lastKoType_ = loggerKoTypes[2 * entry->type + (task && task == subject ? 1 : 0)];
  if (recordsWritten_ == 0 && entry->timestamp != startTime_) WriteProlog();
  WriteRecord(lastKoType_, subject ? subject->GetId() : 0, entry->timestamp);
  if (entry->type == TLLogTestpoint || entry->type == TLLogTimingIssue)
    WriteString(sink_, subject ? subject->name : std::string());
}

// States what the task did from its last record to the stop time.
void CTaskWriter::WriteLastEntry() {
  static constexpr u8 epilogKoTypes[] = {2, 3, 3, 1, 2, 2, 2, 1, 1};
  if (recordsWritten_ == 0) {
    lastKoType_ = koSwitchedOut1;  // the task never ran
    WriteProlog();
  }
  WriteRecord(epilogKoTypes[lastKoType_], 0, stopTime_);
}

void CTaskWriter::WriteTaskEnd() {
  sink_.Flush();
  if (std::fsetpos(file_, &countPosition_) != 0) throw u32{TLErrFileWrite};
  WriteLE(sink_, recordsWritten_);
  sink_.Flush();
  if (std::fseek(file_, 0, SEEK_END) != 0) throw u32{TLErrFileWrite};
}

using CategoryIterator = std::unique_ptr<_STLCategoryIterator>;
using EntryIterator = std::unique_ptr<_STLEntryIterator>;

void WriteHeader(std::FILE* file, const _STLTaskLog& log) {
  Sink sink(file);
  sink.Put(fileMarker, fileMarkerSize);
  WriteLE(sink, baseVersion);
  WriteLE(sink, fileVersion);
  WriteLE(sink, log.startTime);
  WriteLE(sink, log.stopTime);
  WriteLE(sink, static_cast<u32>(log.ticksPerSecond));
  WriteLE(sink, u32{1});  // divisor of the tick rate
  WriteLE(sink, log.GetCategoriesCount(TL_CATS_TASKS, nullptr));
  sink.Flush();
}

template <class Number>
void WriteTaskSections(std::FILE* file, const _STLTaskLog& log) {
  const SectionIndex<Number> index(log);
  const CategoryIterator tasks(log.GetCategories(TL_CATS_TASKS, nullptr));
  while (const _STLCategory* task = tasks->Next()) {
    CTaskWriter writer(file, &log);
    writer.WriteTaskBegin(task->name, task->GetPriority(), static_cast<u32>(task->GetTimeSlice()));
    index.ForEach(*task, [&](const _STLEntry& entry) { writer.WriteEntry(&entry, task); });
    writer.WriteLastEntry();
    writer.WriteTaskEnd();
  }
}

void WriteEventSection(std::FILE* file, const _STLTaskLog& log, const char* name, u64 types) {
  CTaskWriter writer(file, &log);
  writer.WriteTaskBegin(name, 0, 0);
  const EntryIterator iterator(log.GetEntries(nullptr, types, 0, UINT64_MAX));
  while (const _STLEntry* entry = iterator->Next()) writer.WriteEntry(entry, nullptr);
  writer.WriteTaskEnd();
}

void WriteSections(std::FILE* file, const _STLTaskLog& log) {
  if (log.entries.size() <= UINT32_MAX)
    WriteTaskSections<u32>(file, log);
  else
    WriteTaskSections<std::size_t>(file, log);
  WriteEventSection(file, log, "Stamps", TL_LOGS_TESTPOINTS);
  WriteEventSection(file, log, "Events", TL_LOGS_TIMING_ISSUES);
}

}  // namespace

u32 _STLTaskLog::SaveAsFile(const char* path) const try {
  const Stream stream(path, "wbe");  // closed on every path out
  if (!stream.IsOpen()) return TLErrFileOpen;
  WriteHeader(stream.File(), *this);
  WriteSections(stream.File(), *this);
  return TL_OK;
} catch (u32 status) {
  return status;
} catch (const std::bad_alloc&) {
  return TLErrOutOfMemory;
}
