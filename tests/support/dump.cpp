// Turns logs into text.
#include "support/dump.h"

namespace {

std::string NameOf(TLCategory category) { return category ? TLCategoryGetName(category) : "-"; }

std::string CategoryText(TLCategory category) {
  std::string text = NameOf(category);
  switch (TLCategoryGetType(category)) {
    case TLCatTask:
      text = "task " + text + ' ' + std::to_string(TLTaskGetPriority(category)) + ' ' +
             std::to_string(TLTaskGetTimeslice(category));
      break;
    case TLCatTestpoint: text = "testpoint " + text; break;
    case TLCatTimingIssue: text = "issue " + text; break;
    default: text = "category of unknown kind " + text;
  }
  return text + " id " + std::to_string(TLCategoryGetId(category));
}

void AddTo(std::string& dump, const std::string& piece) { dump += (dump.empty() ? "" : "; ") + piece; }

}  // namespace

std::string EntryText(TLEntry entry) {
  return std::to_string(TLEntryGetTimestamp(entry)) + ' ' + std::to_string(TLEntryGetType(entry)) + ' ' +
         NameOf(TLEntryGetCategory(entry, 0)) + ' ' + NameOf(TLEntryGetCategory(entry, 1));
}

std::string DumpEntries(TLTaskLog log, TLCategory category, std::uint64_t types, std::uint64_t from,
                        std::uint64_t to) {
  std::string dump;
  const TLEntryIterator iterator = TLTaskLogGetEntries(log, category, types, from, to);
  while (const TLEntry entry = TLEntryIteratorNext(iterator)) AddTo(dump, EntryText(entry));
  TLEntryIteratorDestroy(iterator);
  return dump;
}

std::string DumpCategories(TLTaskLog log, std::uint64_t types, const char* name) {
  std::string dump;
  const TLCategoryIterator iterator = TLTaskLogGetCategories(log, types, name);
  while (const TLCategory category = TLCategoryIteratorNext(iterator)) AddTo(dump, CategoryText(category));
  TLCategoryIteratorDestroy(iterator);
  return dump;
}

std::string DumpTimes(TLTaskLog log) {
  return std::to_string(TLTaskLogGetStartTime(log)) + ' ' + std::to_string(TLTaskLogGetStopTime(log)) + ' ' +
         std::to_string(TLTaskLogGetTicksPerSecond(log));
}

TLCategory CategoryNamed(TLTaskLog log, const char* name) {
  const TLCategoryIterator iterator = TLTaskLogGetCategories(log, 0, name);
  const TLCategory first = TLCategoryIteratorNext(iterator);
  const TLCategory second = TLCategoryIteratorNext(iterator);
  TLCategoryIteratorDestroy(iterator);
  return second ? nullptr : first;
}

std::size_t CountIn(const std::string& dump) {
  std::size_t count = dump.empty() ? 0 : 1;
  for (std::size_t at = 0; (at = dump.find("; ", at)) != std::string::npos; ++at) ++count;
  return count;
}

LogPtr NewLog() {
  TLTaskLog log = nullptr;
  TLTaskLogCreate(&log);
  return LogPtr(log);
}
