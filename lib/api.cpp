// The TL exports. Each forwards to the log, takes a null target for the empty name, refuses other null
// arguments, or turns a failed allocation into its code. No other logic.
#include <new>

#include "model/model.h"
#include "target/target.h"

uint32_t TLTaskLogCreate(TLTaskLog* log) {
  if (!log) return TLErrOutOfMemory;
  TLTaskLog created = new (std::nothrow) _STLTaskLog;
  if (!created) return TLErrOutOfMemory;
  *log = created;
  return TL_OK;
}

void TLTaskLogDestroy(TLTaskLog log) { delete log; }

uint32_t TLStartLog(const char* target, const char* triggerTask) {
  return StartLog(target ? target : "", triggerTask);
}

uint32_t TLTaskLogAppendFromTarget(TLTaskLog log, const char* target, int32_t kernel, TLProgress progress,
                                   void* user) {
  return log->AppendFromTarget(target ? target : "", kernel, progress, user);
}

uint32_t TLTaskLogAppendFromFile(TLTaskLog log, const char* path) {
  if (!path) return TLErrFileOpen;
  try {
    return log->AppendFromFile(path);
  } catch (const std::bad_alloc&) {
    return TLErrOutOfMemory;
  }
}

uint64_t TLTaskLogGetStartTime(TLTaskLog log) { return log->startTime; }

uint64_t TLTaskLogGetStopTime(TLTaskLog log) { return log->stopTime; }

uint64_t TLTaskLogGetTicksPerSecond(TLTaskLog log) { return log->ticksPerSecond; }

uint32_t TLTaskLogGetCategoriesCount(TLTaskLog log, uint64_t types, const char* name) {
  return log->GetCategoriesCount(types, name);
}

TLCategoryIterator TLTaskLogGetCategories(TLTaskLog log, uint64_t types, const char* name) try {
  return log->GetCategories(types, name);
} catch (const std::bad_alloc&) {
  return nullptr;
}

uint64_t TLTaskLogGetEntriesCount(TLTaskLog log, TLCategory category, uint64_t types, uint64_t from,
                                  uint64_t to) {
  return log->GetEntriesCount(category, types, from, to);
}

TLEntryIterator TLTaskLogGetEntries(TLTaskLog log, TLCategory category, uint64_t types, uint64_t from,
                                    uint64_t to) try {
  return log->GetEntries(category, types, from, to);
} catch (const std::bad_alloc&) {
  return nullptr;
}

TLCategory TLCategoryIteratorNext(TLCategoryIterator iterator) { return iterator->Next(); }

void TLCategoryIteratorDestroy(TLCategoryIterator iterator) { delete iterator; }

TLEntry TLEntryIteratorNext(TLEntryIterator iterator) { return iterator->Next(); }

void TLEntryIteratorDestroy(TLEntryIterator iterator) { delete iterator; }

ETLCatType TLCategoryGetType(TLCategory category) { return category->GetType(); }

const char* TLCategoryGetName(TLCategory category) { return category->name.c_str(); }

uint32_t TLCategoryGetId(TLCategory category) { return category->GetId(); }

uint32_t TLTaskGetPriority(TLCategory category) { return category->GetPriority(); }

int32_t TLTaskGetTimeslice(TLCategory category) { return category->GetTimeSlice(); }

ETLLogType TLEntryGetType(TLEntry entry) { return entry->type; }

uint64_t TLEntryGetTimestamp(TLEntry entry) { return entry->timestamp; }

TLCategory TLEntryGetCategory(TLEntry entry, uint32_t slot) {
  return slot < 2 ? entry->slots[slot] : nullptr;
}

uint32_t TLTaskLogSaveAsFile(TLTaskLog log, const char* path) {
  if (!path) return TLErrFileOpen;
  return log->SaveAsFile(path);
}
