// What a lane's statistics cost, once its log is there.
#include "analysis/parts.h"
#include "analysis/statistics.h"
#include "analysis/walker.h"
#include "setting.h"

namespace bench {
namespace {

struct LoadedLog {
  tasklog::Log log;
  void Acquire(std::int32_t kernel) { static_cast<void>(log.AppendFromTarget("ctl", kernel)); }
};

// Every switch back ends a job, every other begins one: as many jobs as a schedule can have.
analysis::Conventions ConventionsOf(const analysis::Lane& lane) {
  std::string mistake;
  return {*analysis::Meanings::Parse("0=preempted,1=preempted,3=preempted,4=done,5=preempted", mistake),
          analysis::FindIdleTask(lane)};
}

// The walk alone: nobody listens.
void WalkAlone(benchmark::State& state, std::uint32_t taskCount) {
  const LoadedLog& loaded = LogOf<LoadedLog>(taskCount, state.range(0));
  for (auto _ : state) {
    const analysis::Lane lane({&loaded.log});
    analysis::Walk(lane, ConventionsOf(lane), {});
  }
  Report(state, static_cast<double>(state.range(0)));
}

void TakeStatistics(benchmark::State& state, std::uint32_t taskCount) {
  const LoadedLog& loaded = LogOf<LoadedLog>(taskCount, state.range(0));
  for (auto _ : state) {
    const analysis::Lane lane({&loaded.log});
    const analysis::Statistics statistics = analysis::Statistics::Of(lane, ConventionsOf(lane));
    for (const analysis::TaskStatistics& task : statistics.Tasks())
      for (const analysis::Values& values : task.values) benchmark::DoNotOptimize(values.Summarize());
  }
  Report(state, static_cast<double>(state.range(0)));
}

class CountedParts : public analysis::Parts {
 public:
  using Parts::Parts;
  void OnParts(const analysis::Job&, const std::vector<analysis::Part>& parts) override {
    count += parts.size();
  }
  std::uint64_t count = 0;
};

void SplitJobs(benchmark::State& state, std::uint32_t taskCount) {
  const LoadedLog& loaded = LogOf<LoadedLog>(taskCount, state.range(0));
  for (auto _ : state) {
    const analysis::Lane lane({&loaded.log});
    const analysis::Conventions conventions = ConventionsOf(lane);
    CountedParts parts(lane, conventions.idle);
    analysis::Walk(lane, conventions, {&parts});
    benchmark::DoNotOptimize(parts.count);
  }
  Report(state, static_cast<double>(state.range(0)));
}

void RegisterAnalysis(const std::string& operation, Run run) {
  for (const std::uint32_t tasks : taskCounts)
    RegisterSizes({operation, Library::name, tasks, "ns an entry", benchmark::oN}, sizes[3], run);
}

}  // namespace

void RegisterAnalyses() {
  RegisterAnalysis("walk", WalkAlone);
  RegisterAnalysis("statistics", TakeStatistics);
  RegisterAnalysis("split jobs", SplitJobs);
}

}  // namespace bench
