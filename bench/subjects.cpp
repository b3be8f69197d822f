// The library and the plain model behind one face.
#include "subjects.h"

#include <fmt/format.h>

#include <stdexcept>

namespace bench {
namespace {

void Check(std::uint32_t status, const char* operation) {
  if (status != 0) throw std::runtime_error(fmt::format("{} failed with status 0x{:X}", operation, status));
}

std::string EntryLine(std::uint64_t time, std::uint32_t type, const char* subject, const char* running) {
  return fmt::format("{} {} {} {}", time, type, subject, running);
}

std::string CategoryLine(std::uint32_t kind, const char* name, std::uint32_t id, std::uint32_t priority,
                         std::int32_t timeSlice) {
  return fmt::format("{} {} {:X} {} {}", kind, name, id, priority, timeSlice);
}

const char* NameOf(TLCategory category) { return category ? TLCategoryGetName(category) : "-"; }
const char* NameOf(const plain::Category* category) { return category ? category->name.c_str() : "-"; }

using LibraryEntries = std::unique_ptr<std::remove_pointer_t<TLEntryIterator>, void (*)(TLEntryIterator)>;
using LibraryCategories =
    std::unique_ptr<std::remove_pointer_t<TLCategoryIterator>, void (*)(TLCategoryIterator)>;

}  // namespace

Library::Library() {
  TLTaskLog log = nullptr;
  Check(TLTaskLogCreate(&log), "create");
  log_.reset(log);
}

void Library::Acquire(std::int32_t kernel) {
  Check(TLTaskLogAppendFromTarget(log_.get(), "bench", kernel, nullptr, nullptr), "acquire");
}

void Library::Load(const std::string& path) {
  Check(TLTaskLogAppendFromFile(log_.get(), path.c_str()), "load");
}

void Library::Save(const std::string& path) const {
  Check(TLTaskLogSaveAsFile(log_.get(), path.c_str()), "save");
}

std::uint64_t Library::SumOfTimes() const {
  const LibraryEntries entries(TLTaskLogGetEntries(log_.get(), nullptr, UINT64_MAX, 0, UINT64_MAX),
                               TLEntryIteratorDestroy);
  std::uint64_t sum = 0;
  while (TLEntry entry = TLEntryIteratorNext(entries.get())) sum += TLEntryGetTimestamp(entry);
  return sum;
}

TLCategory Library::CategoryNamed(const char* categoryName) const {
  const LibraryCategories categories(TLTaskLogGetCategories(log_.get(), 0, categoryName),
                                     TLCategoryIteratorDestroy);
  return TLCategoryIteratorNext(categories.get());
}

Lines Library::Entries() const {
  const LibraryEntries entries(TLTaskLogGetEntries(log_.get(), nullptr, UINT64_MAX, 0, UINT64_MAX),
                               TLEntryIteratorDestroy);
  Lines lines;
  while (TLEntry entry = TLEntryIteratorNext(entries.get()))
    lines.push_back(EntryLine(TLEntryGetTimestamp(entry), TLEntryGetType(entry),
                              NameOf(TLEntryGetCategory(entry, 0)), NameOf(TLEntryGetCategory(entry, 1))));
  return lines;
}

Lines Library::Categories() const {
  const LibraryCategories categories(TLTaskLogGetCategories(log_.get(), 0, nullptr),
                                     TLCategoryIteratorDestroy);
  Lines lines;
  while (TLCategory category = TLCategoryIteratorNext(categories.get()))
    lines.push_back(CategoryLine(TLCategoryGetType(category), NameOf(category), TLCategoryGetId(category),
                                 TLTaskGetPriority(category), TLTaskGetTimeslice(category)));
  return lines;
}

void Plain::Acquire(std::int32_t kernel) { Check(log_.AppendFromTarget("bench", kernel), "plain acquire"); }

void Plain::Load(const std::string& path) { Check(log_.AppendFromFile(path.c_str()), "plain load"); }

void Plain::Save(const std::string& path) const { Check(log_.SaveAsFile(path.c_str()), "plain save"); }

std::uint64_t Plain::SumOfTimes() const {
  plain::Cursor cursor = log_.Entries({.types = UINT64_MAX});
  std::uint64_t sum = 0;
  while (const plain::Entry* entry = cursor.Next()) sum += entry->timestamp;
  return sum;
}

const plain::Category* Plain::CategoryNamed(const char* categoryName) const {
  const auto categories = log_.Categories(0, categoryName);
  return categories.empty() ? nullptr : categories.front();
}

Lines Plain::Entries() const {
  Lines lines;
  for (const plain::Entry& entry : log_.entries)
    lines.push_back(EntryLine(entry.timestamp, entry.type, NameOf(entry.slots[0]), NameOf(entry.slots[1])));
  return lines;
}

Lines Plain::Categories() const {
  Lines lines;
  for (const plain::Category* category : log_.Categories())
    lines.push_back(CategoryLine(category->kind, NameOf(category), category->id, category->priority,
                                 category->timeSlice));
  return lines;
}

}  // namespace bench
