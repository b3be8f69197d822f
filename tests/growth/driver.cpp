// Runs each operation at several sizes and lets callgrind count the instructions of the operation alone.
// Every count is dumped under "operation/entries/tasks". Run by growth_test.
#include <tasklog/tasklog.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <type_traits>

#include "analysis/findings.h"
#include "analysis/statistics.h"
#include "growth/counting.h"
#include "growth/machine.h"
#include "growth/shapes.h"
#include "growth/sizes.h"
#include "ring.h"

namespace growth {
namespace {

struct Destroy {
  void operator()(TLTaskLog log) const { TLTaskLogDestroy(log); }
};
using Log = std::unique_ptr<std::remove_pointer_t<TLTaskLog>, Destroy>;

void Check(std::uint32_t status) {
  if (status == TL_OK) return;
  std::fprintf(stderr, "an operation failed with status 0x%X\n", status);
  std::exit(1);
}

Log NewLog() {
  TLTaskLog log = nullptr;
  Check(TLTaskLogCreate(&log));
  return Log(log);
}

void Acquire(const Log& log, std::int32_t kernel) {
  Check(TLTaskLogAppendFromTarget(log.get(), "bench", kernel, nullptr, nullptr));
}

void SetController(Setting setting, std::uint32_t kernel) {
  const auto nameOf = [](std::uint32_t index) { return "Task" + std::to_string(index); };
  TheMachine() = {bench::FullRing(bench::MakeRecords(setting.taskCount, kernel, setting.entries)),
                  setting.taskCount, bench::testpointCount, nameOf, true};
}

Log FilledLog(Setting setting) {
  SetController(setting, 1);
  Log log = NewLog();
  Acquire(log, 1);
  return log;
}

void CountAppends(Setting setting) {
  SetController(setting, 1);
  const Log log = NewLog();
  Count("acquire", setting, [&] { Acquire(log, 1); });
  Count("read again", setting, [&] { Acquire(log, 1); });
  SetController(setting, 2);
  Count("merge", setting, [&] { Acquire(log, 2); });
}

void CountFiles(Setting setting, const char* path) {
  const Log log = FilledLog(setting);
  Count("save", setting, [&] { Check(TLTaskLogSaveAsFile(log.get(), path)); });
  const Log loaded = NewLog();
  Count("load", setting, [&] { Check(TLTaskLogAppendFromFile(loaded.get(), path)); });
}

void CountAnalyses(const std::string& label, Setting setting, const char* path) {
  tasklog::Log log;
  Check(log.AppendFromFile(path).Code());
  Count(label + ": statistics", setting, [&] {
    const analysis::Lane lane({&log});
    const analysis::Conventions conventions{analysis::Meanings::OfSimulator(), analysis::FindIdleTask(lane)};
    const analysis::Statistics statistics = analysis::Statistics::Of(lane, conventions);
    for (const analysis::TaskStatistics& task : statistics.Tasks())
      for (const analysis::Values& values : task.values) static_cast<void>(values.Summarize());
  });
  Count(label + ": explain", setting, [&] {
    const analysis::Lane lane({&log});
    const analysis::Schedule schedule(lane,
                                      {analysis::Meanings::OfSimulator(), analysis::FindIdleTask(lane)});
    static_cast<void>(analysis::Explain(schedule, {}));
  });
}

// What an odd machine may hold, and a file made of it.
void CountRing(const RingShape& shape, Setting setting, const char* path) {
  std::vector<bench::Record> records;
  const std::size_t size = setting.entries * shape.scale;
  for (std::uint32_t i = 0; i < size; ++i) records.push_back(shape.recordAt(i, size));
  const auto count = [&](bool has) { return has ? static_cast<std::uint32_t>(setting.entries) : 0; };
  TheMachine() = {bench::FullRing(records), count(shape.tasks), count(shape.testpoints), shape.nameOf,
                  shape.slicesDiffer};
  const std::string label = std::string("ring of ") + shape.name;
  const Log log = NewLog();
  if (shape.scale > 1) {
    Acquire(log, 1);
    Check(TLTaskLogSaveAsFile(log.get(), path));
    return CountAnalyses(label, setting, path);
  }
  Count(label + ": acquire", setting, [&] { Acquire(log, 1); });
  Count(label + ": read again", setting, [&] { Acquire(log, 1); });
  Count(label + ": save", setting, [&] { Check(TLTaskLogSaveAsFile(log.get(), path)); });
  const Log loaded = NewLog();
  Count(label + ": load", setting, [&] { Check(TLTaskLogAppendFromFile(loaded.get(), path)); });
  CountAnalyses(label, setting, path);
}

void WriteFile(const char* path, const Bytes& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// Of the many that write a file anew, a part of the entries shows the growth.
constexpr std::uint32_t exportedPart = 8;

void CountFile(const FileShape& shape, Setting setting, const char* path) {
  const auto entries = static_cast<std::uint32_t>(setting.entries);
  WriteFile(path, shape.make(entries));
  const std::string label = std::string("file of ") + shape.name;
  const Log log = NewLog();
  Count(label + ": load", setting, [&] { Check(TLTaskLogAppendFromFile(log.get(), path)); });
  Count(label + ": load again", setting, [&] { Check(TLTaskLogAppendFromFile(log.get(), path)); });
  CountAnalyses(label, setting, path);
  Count(label + ": save", setting, [&] { Check(TLTaskLogSaveAsFile(log.get(), path)); });
  WriteFile(path, shape.make(entries / exportedPart));
  CountExports(label + ": ", setting, path);
  CountRepairs(label + ": ", setting, path);
}

// Several polls, of which each brings some records of what the buffer holds.
void CountPolls(Setting setting) {
  constexpr std::size_t polls = 8;
  constexpr std::size_t cellCount = 512;
  constexpr std::size_t newRecords = 64;
  const auto records = bench::MakeRecords(setting.taskCount, 1, setting.entries + polls * newRecords);
  const std::span<const bench::Record> all(records);
  SetController(setting, 1);
  TheMachine().ring = bench::FullRing(all.first(setting.entries));
  const Log log = NewLog();
  Acquire(log, 1);
  std::vector<std::vector<std::uint32_t>> rings;
  for (std::size_t poll = 1; poll <= polls; ++poll) {
    const std::size_t written = setting.entries + poll * newRecords;
    rings.push_back(bench::RingOf(all.subspan(written - cellCount + 1, cellCount - 1), cellCount, written));
  }
  Count("poll", setting, [&] {
    for (std::vector<std::uint32_t>& ring : rings) {
      TheMachine().ring.swap(ring);
      Acquire(log, 1);
    }
  });
}

void CountQueries(Setting setting) {
  const Log log = FilledLog(setting);
  TLTaskLog handle = log.get();
  TLCategoryIterator categories = TLTaskLogGetCategories(handle, TL_CATS_TASKS, "Task3");
  const TLCategory task = TLCategoryIteratorNext(categories);
  TLCategoryIteratorDestroy(categories);
  std::uint64_t sum = 0;
  Count("count a type", setting,
        [&] { sum += TLTaskLogGetEntriesCount(handle, nullptr, TL_LOGS_TESTPOINTS, 0, UINT64_MAX); });
  Count("count a category", setting,
        [&] { sum += TLTaskLogGetEntriesCount(handle, task, 0, 0, UINT64_MAX); });
  const std::uint64_t start = TLTaskLogGetStartTime(handle);
  const std::uint64_t length = TLTaskLogGetStopTime(handle) - start;
  constexpr std::uint64_t lookUps = 64;
  Count("look up a range", setting, [&] {
    for (std::uint64_t i = 0; i < lookUps; ++i) {
      const std::uint64_t from = start + 1 + length * i / lookUps;
      sum += TLTaskLogGetEntriesCount(handle, nullptr, 0, from, from + 1000);
    }
  });
  Count("iterate", setting, [&] {
    TLEntryIterator iterator = TLTaskLogGetEntries(handle, nullptr, 0, 0, UINT64_MAX);
    while (TLEntry entry = TLEntryIteratorNext(iterator)) sum += TLEntryGetTimestamp(entry);
    TLEntryIteratorDestroy(iterator);
  });
  if (sum == 0) Check(TLErrFileInvalid);  // there are testpoints, so something is wrong
}

int Run() {
  char path[] = "/tmp/growth-XXXXXX";
  const int file = mkstemp(path);
  if (file < 0) return 1;
  close(file);
  // First, on a heap that is in order: the few instructions of a poll show what an allocation has to look
  // for.
  for (const Setting setting : flatSettings) {
    CountPolls(setting);
    CountQueries(setting);
  }
  for (const Setting setting : linearSettings) {
    CountAppends(setting);
    CountFiles(setting, path);
  }
  for (const Setting setting : exportSettings) {
    Check(TLTaskLogSaveAsFile(FilledLog(setting).get(), path));
    CountExports("export ", setting, path);
    CountRepairs("", setting, path);
  }
  for (const std::size_t factor : {1, 2, 4}) {
    for (const RingShape& shape : ringShapes) CountRing(shape, {factor * SmallestShape(false), 0}, path);
    for (const FileShape& shape : fileShapes) CountFile(shape, {factor * SmallestShape(true), 0}, path);
  }
  return unlink(path);
}

}  // namespace
}  // namespace growth

int main() { return growth::Run(); }
