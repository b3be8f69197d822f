// What the benchmarks run on: logs of a given size, the controller that they come from, and the sizes.
#pragma once

#include <filesystem>
#include <memory>

#include "controller.h"
#include "subjects.h"
#include "table.h"

namespace bench {

inline constexpr std::int64_t sizes[] = {10'000, 100'000, 1'000'000, 10'000'000};
inline constexpr std::uint32_t taskCounts[] = {8, 64, 512};
inline constexpr std::uint32_t usualTaskCount = 64;

// A benchmark of one size, for a number of tasks.
using Run = void (*)(benchmark::State&, std::uint32_t taskCount);

// Registers a benchmark at all sizes up to the largest one.
inline benchmark::internal::Benchmark* RegisterSizes(const Family& family, std::int64_t largest, Run run) {
  auto* sized =
      Register(family, [run, tasks = family.taskCount](benchmark::State& state) { run(state, tasks); });
  sized->ArgName("entries")->Complexity(family.growth);
  for (const std::int64_t size : sizes)
    if (size <= largest) sized->Arg(size);
  return sized;
}

// States the size of the run and by what its time is to be divided.
inline void Report(benchmark::State& state, double per) {
  state.counters[divisor] = per;
  state.SetComplexityN(state.range(0));
}

// Puts records of one kernel's schedule into the controller's buffer.
void SetController(std::uint32_t taskCount, std::uint32_t kernel, std::int64_t count);

// A log with the records of kernel 1, which the controller's buffer holds, too. The log asked for last is
// kept.
template <class Subject>
Subject& LogOf(std::uint32_t taskCount, std::int64_t size) {
  static std::unique_ptr<Subject> log;
  static std::uint32_t logTaskCount = 0;
  static std::int64_t logSize = 0;
  SetController(taskCount, 1, size);
  if (log && logTaskCount == taskCount && logSize == size) return *log;
  log = nullptr;
  log = std::make_unique<Subject>();
  log->Acquire(1);
  logTaskCount = taskCount;
  logSize = size;
  return *log;
}

// A path in the folder for temporary files, of this process alone; removed at the end.
class TempFile {
 public:
  TempFile();
  ~TempFile() { Remove(); }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  const std::string& Path() const { return path_; }
  void Remove() const {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

 private:
  std::string path_;
};

// Keeps a step out of the time that is measured.
template <class Step>
void Untimed(benchmark::State& state, Step step) {
  state.PauseTiming();
  step();
  state.ResumeTiming();
}

// Each is a <name>_bench.cpp.
void RegisterAnalyses();
void RegisterAppends();
void RegisterFiles();
void RegisterQueries();
void RegisterLimits();
void RegisterMemory();

}  // namespace bench
