#include "twin.h"

#include <gtest/gtest.h>

namespace {

std::string NameOf(const plain::Category* category) { return category ? category->name : "-"; }

// The same texts as those of support/dump.h.
std::string Entries(const plain::Log& log) {
  std::string dump;
  for (const plain::Entry& entry : log.entries) {
    dump += (dump.empty() ? "" : "; ") + std::to_string(entry.timestamp) + ' ' + std::to_string(entry.type) +
            ' ' + NameOf(entry.slots[0]) + ' ' + NameOf(entry.slots[1]);
  }
  return dump;
}

std::string Categories(const plain::Log& log) {
  std::string dump;
  for (const auto& category : log.categories) {
    constexpr const char* kinds[] = {"task ", "testpoint ", "issue "};
    dump += (dump.empty() ? "" : "; ") + (kinds[category->kind] + category->name);
    if (category->kind == plain::task)
      dump += ' ' + std::to_string(category->priority) + ' ' + std::to_string(category->timeSlice);
    dump += " id " + std::to_string(category->id);
  }
  return dump;
}

std::string Times(const plain::Log& log) {
  return std::to_string(log.startTime) + ' ' + std::to_string(log.stopTime) + ' ' +
         std::to_string(log.ticksPerSecond);
}

std::uint64_t CountYielded(TLTaskLog log, TLCategory category) {
  std::uint64_t count = 0;
  std::uint64_t last = 0;
  const TLEntryIterator iterator = TLTaskLogGetEntries(log, category, anyType, 0, UINT64_MAX);
  for (; const TLEntry entry = TLEntryIteratorNext(iterator); ++count) {
    EXPECT_GE(TLEntryGetTimestamp(entry), last);
    last = TLEntryGetTimestamp(entry);
  }
  TLEntryIteratorDestroy(iterator);
  return count;
}

}  // namespace

void ExpectSound(TLTaskLog log) {
  EXPECT_EQ(TLTaskLogGetEntriesCount(log, nullptr, anyType, 0, UINT64_MAX), CountYielded(log, nullptr));
  std::uint32_t count = 0;
  const TLCategoryIterator iterator = TLTaskLogGetCategories(log, 0, nullptr);
  for (; const TLCategory category = TLCategoryIteratorNext(iterator); ++count) {
    EXPECT_EQ(TLTaskLogGetEntriesCount(log, category, anyType, 0, UINT64_MAX), CountYielded(log, category))
        << TLCategoryGetName(category);
  }
  TLCategoryIteratorDestroy(iterator);
  EXPECT_EQ(TLTaskLogGetCategoriesCount(log, 0, nullptr), count);
}

std::uint32_t Twin::AppendFromTarget(const std::function<void(ScriptedTarget&)>& script) {
  ScriptedTarget target;
  script(target);
  const std::uint32_t status = TLTaskLogAppendFromTarget(Log(), "ctl", 1, nullptr, nullptr);
  ScriptedTarget targetOfModel;
  script(targetOfModel);
  ExpectSame(status, model_.AppendFromTarget("ctl", 1));
  EXPECT_EQ(target.calls, targetOfModel.calls);
  return status;
}

std::uint32_t Twin::AppendFromFile(const char* path) {
  const std::uint32_t status = TLTaskLogAppendFromFile(Log(), path);
  ExpectSame(status, model_.AppendFromFile(path));
  return status;
}

void Twin::ExpectSame(std::uint32_t status, std::uint32_t modelStatus) const {
  EXPECT_EQ(status, modelStatus);
  EXPECT_EQ(DumpEntries(Log()), Entries(model_));
  EXPECT_EQ(DumpCategories(Log()), Categories(model_));
  EXPECT_EQ(DumpTimes(Log()), Times(model_));
  ExpectSound(Log());
}
