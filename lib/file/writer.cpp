// Saves a log as a TaskLog file.
#include <memory>
#include <new>
#include <string>

#include "file/format.h"
#include "model/model.h"

namespace {

void Write(std::FILE* file, const void* bytes, std::size_t size) {
  if (size != 0 && std::fwrite(bytes, 1, size, file) != size) throw u32{TLErrFileWrite};
}

template <class Integer>
void WriteLE(std::FILE* file, Integer value) {
  u8 bytes[sizeof value];
  for (std::size_t i = 0; i < sizeof value; ++i) bytes[i] = static_cast<u8>(u64{value} >> 8 * i);
  Write(file, bytes, sizeof bytes);
}

void WriteString(std::FILE* file, const std::string& text) {
  WriteLE(file, static_cast<u32>(text.size() + 1));
  Write(file, text.c_str(), text.size() + 1);
}

// Writes one section: header, records with their prolog and epilog, and at the end the record count into the
// header.
class CTaskWriter {
 public:
  CTaskWriter(std::FILE* file, const _STLTaskLog* log)
      : file_(file), startTime_(log->startTime), stopTime_(log->stopTime) {}

  void WriteTaskBegin(const std::string& name, u32 priority, u32 timeSlice);
  // `task` is the section's task; null in the Stamps and Events sections.
  void WriteEntry(const _STLEntry* entry, const _STLCategory* task);
  void WriteLastEntry();
  void WriteTaskEnd();

 private:
  void WriteRecord(u8 koType, u32 id, u64 timestamp) {
    WriteLE(file_, u32{koType});
    WriteLE(file_, id);
    WriteLE(file_, timestamp);
    ++recordsWritten_;
  }
  void WriteProlog();

  std::FILE* file_;  // borrowed
  u64 startTime_;    // ticks
  u64 stopTime_;     // ticks
  std::fpos_t countPosition_ = {};
  u32 recordsWritten_ = 0;
  u8 lastKoType_ = 0;  // of an entry's record
};

void CTaskWriter::WriteTaskBegin(const std::string& name, u32 priority, u32 timeSlice) {
  WriteString(file_, name);
  WriteLE(file_, priority);
  WriteLE(file_, timeSlice);
  if (std::fgetpos(file_, &countPosition_) != 0) throw u32{TLErrFileWrite};
  WriteLE(file_, u32{0});
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
    WriteString(file_, subject ? subject->name : std::string());
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
  if (std::fsetpos(file_, &countPosition_) != 0) throw u32{TLErrFileWrite};
  WriteLE(file_, recordsWritten_);
  if (std::fseek(file_, 0, SEEK_END) != 0) throw u32{TLErrFileWrite};
}

using CategoryIterator = std::unique_ptr<_STLCategoryIterator>;
using EntryIterator = std::unique_ptr<_STLEntryIterator>;

void WriteHeader(std::FILE* file, const _STLTaskLog& log) {
  Write(file, fileMarker, fileMarkerSize);
  WriteLE(file, baseVersion);
  WriteLE(file, fileVersion);
  WriteLE(file, log.startTime);
  WriteLE(file, log.stopTime);
  WriteLE(file, static_cast<u32>(log.ticksPerSecond));
  WriteLE(file, u32{1});  // divisor of the tick rate
  WriteLE(file, log.GetCategoriesCount(TL_CATS_TASKS, nullptr));
}

void WriteTaskSection(std::FILE* file, const _STLTaskLog& log, const _STLCategory* task) {
  CTaskWriter writer(file, &log);
  writer.WriteTaskBegin(task->name, task->GetPriority(), static_cast<u32>(task->GetTimeSlice()));
  const u64 types = TL_LOGS_SWITCHES | TL_LOGS_TASK_EVENTS;
  const EntryIterator iterator(log.GetEntries(task, types, 0, UINT64_MAX));
  while (const _STLEntry* entry = iterator->Next()) {
    const bool ownEvent = entry->slots[0] == task;
    if (entry->type != TLLogTaskEvent || ownEvent) writer.WriteEntry(entry, task);
  }
  writer.WriteLastEntry();
  writer.WriteTaskEnd();
}

void WriteEventSection(std::FILE* file, const _STLTaskLog& log, const char* name, u64 types) {
  CTaskWriter writer(file, &log);
  writer.WriteTaskBegin(name, 0, 0);
  const EntryIterator iterator(log.GetEntries(nullptr, types, 0, UINT64_MAX));
  while (const _STLEntry* entry = iterator->Next()) writer.WriteEntry(entry, nullptr);
  writer.WriteTaskEnd();
}

void WriteSections(std::FILE* file, const _STLTaskLog& log) {
  const CategoryIterator tasks(log.GetCategories(TL_CATS_TASKS, nullptr));
  while (const _STLCategory* task = tasks->Next()) WriteTaskSection(file, log, task);
  WriteEventSection(file, log, "Stamps", TL_LOGS_TESTPOINTS);
  WriteEventSection(file, log, "Events", TL_LOGS_TIMING_ISSUES);
}

}  // namespace

u32 _STLTaskLog::SaveAsFile(const char* path) const {
  const FilePtr file(std::fopen(path, "wb"));  // closed on every path out
  if (!file) return TLErrFileOpen;
  try {
    WriteHeader(file.get(), *this);
    WriteSections(file.get(), *this);
    return TL_OK;
  } catch (u32 status) {
    return status;
  } catch (const std::bad_alloc&) {
    return TLErrOutOfMemory;
  }
}
