// What an export needs beside the log stays the same however long the log is. Each block that is allocated in
// this program is counted, those of the libraries that a format stands on, too.
#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <vector>

#include "exporters/exporter.h"
#include "support/taskfile.h"

namespace {

std::atomic<std::size_t> held = 0;
std::atomic<std::size_t> peak = 0;

void* Held(void* memory) {
  if (!memory) return memory;
  const std::size_t now = held += malloc_usable_size(memory);
  if (now > peak) peak = now;
  return memory;
}

void Release(void* memory) {
  if (memory) held -= malloc_usable_size(memory);
}

}  // namespace

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);

void* malloc(std::size_t size) { return Held(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) { return Held(__libc_calloc(count, size)); }
void* realloc(void* memory, std::size_t size) {
  Release(memory);
  return Held(__libc_realloc(memory, size));
}
void free(void* memory) {
  Release(memory);
  __libc_free(memory);
}

}  // extern "C"

namespace {

class TempFiles : public exporters::Files {
 public:
  std::string Create(const std::string&) override {
    return files_.emplace_back(std::make_unique<TempFile>(Bytes()))->Path();
  }

 private:
  std::vector<std::unique_ptr<TempFile>> files_;
};

// A task that preempts another each second tick: so many entries and runs, and half as many jobs.
tasklog::Log LogOf(std::uint32_t entries) {
  FileSection low{"Low", 1}, high{"High", 2};
  for (std::uint32_t i = 0; i < entries; ++i) {
    low.records.push_back({i % 2 == 0 ? 5u : 2u, 1, 1000 + i});
    high.records.push_back({i % 2 == 0 ? 2u : 5u, 2, 1000 + i});
  }
  const TempFile file(TaskFile({.startTime = 1000, .stopTime = 1000 + entries}, {low, high}));
  tasklog::Log log;
  EXPECT_TRUE(log.AppendFromFile(file.CPath()));
  return log;
}

std::size_t PeakOf(const exporters::Format& format, const tasklog::Log& log) {
  const analysis::Lane lane({&log});
  const analysis::Conventions conventions{{}, analysis::FindIdleTask(lane)};
  const std::string name = "lane";
  TempFiles files;
  const std::size_t before = held;
  peak = before;
  const auto exporter = format.make(files);
  exporter->Add({name, log.StartTime(), lane, conventions, {}, false});
  exporter->End();
  return peak - before;
}

// Both logs fill the blocks and row groups of every format.
TEST(Memory, OfAnExportDoesNotGrowWithTheLog) {
  const tasklog::Log log = LogOf(300'000), longer = LogOf(600'000);
  for (const exporters::Format& format : exporters::Formats()) {
    SCOPED_TRACE(format.name);
    const std::size_t ofLog = PeakOf(format, log), ofLonger = PeakOf(format, longer);
    EXPECT_GT(ofLog, 0u);
    EXPECT_LT(ofLonger, ofLog + ofLog / 20) << ofLog << " bytes become " << ofLonger;
    RecordProperty(format.name, std::to_string(ofLonger));
  }
}

}  // namespace
