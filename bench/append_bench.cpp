// Acquiring, reading again, merging and polling.
#include "ring.h"
#include "setting.h"

namespace bench {
namespace {

template <class Subject>
void Acquire(benchmark::State& state, std::uint32_t taskCount) {
  SetController(taskCount, 1, state.range(0));
  std::unique_ptr<Subject> log;
  for (auto _ : state) {
    Untimed(state, [&] { log = std::make_unique<Subject>(); });
    log->Acquire(1);
    Untimed(state, [&] { log.reset(); });
  }
  Report(state, static_cast<double>(state.range(0)));
}

template <class Subject>
void ReadAgain(benchmark::State& state, std::uint32_t taskCount) {
  Subject& log = LogOf<Subject>(taskCount, state.range(0));
  for (auto _ : state) log.Acquire(1);
  Report(state, static_cast<double>(state.range(0)));
}

// One more kernel into a log that holds some, each of the same size. Time a new entry.
template <class Subject, int heldKernels>
void Merge(benchmark::State& state, std::uint32_t taskCount) {
  std::unique_ptr<Subject> log;
  for (auto _ : state) {
    Untimed(state, [&] {
      log = std::make_unique<Subject>();
      for (int kernel = 1; kernel <= heldKernels; ++kernel) {
        SetController(taskCount, static_cast<std::uint32_t>(kernel), state.range(0));
        log->Acquire(kernel);
      }
      SetController(taskCount, heldKernels + 1, state.range(0));
    });
    log->Acquire(heldKernels + 1);
    Untimed(state, [&] { log.reset(); });
  }
  Report(state, static_cast<double>(state.range(0)));
}

// Reads a small buffer again and again, into a log that grows with each read.
template <class Subject>
void Poll(benchmark::State& state, std::uint32_t taskCount) {
  constexpr std::size_t cellCount = 8192;
  constexpr std::size_t newRecords = 512;
  const auto held = static_cast<std::size_t>(state.range(0));
  const auto polls = static_cast<std::size_t>(state.max_iterations);
  const std::vector<Record> records = MakeRecords(taskCount, 1, held + polls * newRecords);
  const std::span<const Record> all(records);
  TheController() = {taskCount, RingOf(all.first(held), held + 1, held)};
  Subject log;
  log.Acquire(1);
  std::size_t written = held;
  for (auto _ : state) {
    Untimed(state, [&] {
      written += newRecords;
      const std::span newest = all.subspan(written - (cellCount - 1), cellCount - 1);
      TheController().ring = RingOf(newest, cellCount, written);
    });
    log.Acquire(1);
  }
  Report(state, 1000);
}

void RegisterMerge(const std::string& operation, Run run) {
  for (const std::uint32_t tasks : taskCounts)
    RegisterSizes({operation, Library::name, tasks, "ns a new entry", benchmark::oN}, sizes[3], run);
}

}  // namespace

void RegisterAppends() {
  for (const std::uint32_t tasks : taskCounts) {
    RegisterSizes({"acquire", Library::name, tasks, "ns an entry", benchmark::oN}, sizes[3],
                  Acquire<Library>);
    RegisterSizes({"acquire", Plain::name, tasks, "ns an entry"}, sizes[2], Acquire<Plain>);
  }
  for (const std::uint32_t tasks : taskCounts) {
    RegisterSizes({"read again", Library::name, tasks, "ns an entry", benchmark::oN}, sizes[3],
                  ReadAgain<Library>);
    RegisterSizes({"read again", Plain::name, tasks, "ns an entry"}, sizes[2], ReadAgain<Plain>);
  }
  RegisterMerge("merge a 2nd kernel", Merge<Library, 1>);
  RegisterSizes({"merge a 2nd kernel", Plain::name, usualTaskCount, "ns a new entry"}, sizes[1],
                Merge<Plain, 1>);
  RegisterMerge("merge a 3rd kernel", Merge<Library, 2>);
  RegisterMerge("merge a 4th kernel", Merge<Library, 3>);
  for (const std::uint32_t tasks : taskCounts)
    RegisterSizes({"poll", Library::name, tasks, "us a poll", benchmark::o1}, sizes[3], Poll<Library>)
        ->Iterations(100);
  RegisterSizes({"poll", Plain::name, usualTaskCount, "us a poll"}, sizes[2], Poll<Plain>)->Iterations(5);
}

}  // namespace bench
