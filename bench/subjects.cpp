// The library and the plain model behind one face.
#include "subjects.h"

#include <fmt/format.h>

#include <stdexcept>

namespace bench {
namespace {

void Check(std::uint32_t status, const char* operation) {
  if (status != 0) throw std::runtime_error(fmt::format("{} failed with status 0x{:X}", operation, status));
}

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

}  // namespace bench
