// Counting, looking up and iterating.
#include <random>

#include "setting.h"

namespace bench {
namespace {

// Keeps a result from being left out as unused.
template <class Value>
void Use(Value value) {
  benchmark::DoNotOptimize(value);
}

template <class Subject>
void CountType(benchmark::State& state, std::uint32_t taskCount) {
  const Subject& log = LogOf<Subject>(taskCount, state.range(0));
  for (auto _ : state) Use(log.Count(nullptr, TL_LOGS_TESTPOINTS, 0, UINT64_MAX));
  Report(state, 1);
}

template <class Subject>
void CountCategory(benchmark::State& state, std::uint32_t taskCount) {
  const Subject& log = LogOf<Subject>(taskCount, state.range(0));
  const typename Subject::Category task = log.CategoryNamed("Task003");
  for (auto _ : state) Use(log.Count(task, 0, 0, UINT64_MAX));
  Report(state, 1);
}

// Short stretches all over the log, so that each is a place not looked at before.
template <class Subject>
void LookUp(benchmark::State& state, std::uint32_t taskCount) {
  const Subject& log = LogOf<Subject>(taskCount, state.range(0));
  std::mt19937_64 random(1);
  const std::uint64_t start = log.StartTime();
  const std::uint64_t length = log.StopTime() - start;
  std::uint64_t from[4096];
  for (std::uint64_t& time : from) time = start + 1 + random() % length;
  std::size_t next = 0;
  for (auto _ : state) {
    const std::uint64_t time = from[next++ % std::size(from)];
    Use(log.Count(nullptr, 0, time, time + 1000));
  }
  Report(state, 1);
}

template <class Subject>
void Iterate(benchmark::State& state, std::uint32_t taskCount) {
  const Subject& log = LogOf<Subject>(taskCount, state.range(0));
  for (auto _ : state) Use(log.SumOfTimes());
  Report(state, static_cast<double>(state.range(0)));
}

void RegisterQuery(const std::string& operation, const std::string& unit, benchmark::BigO growth, Run library,
                   Run plain) {
  for (const std::uint32_t tasks : taskCounts)
    RegisterSizes({operation, Library::name, tasks, unit, growth}, sizes[3], library);
  RegisterSizes({operation, Plain::name, usualTaskCount, unit}, sizes[2], plain);
}

}  // namespace

void RegisterQueries() {
  RegisterQuery("count a type", "ns a call", benchmark::o1, CountType<Library>, CountType<Plain>);
  RegisterQuery("count a category", "ns a call", benchmark::o1, CountCategory<Library>, CountCategory<Plain>);
  RegisterQuery("look up a range", "ns a call", benchmark::oLogN, LookUp<Library>, LookUp<Plain>);
  RegisterQuery("iterate", "ns an entry", benchmark::oN, Iterate<Library>, Iterate<Plain>);
}

}  // namespace bench
