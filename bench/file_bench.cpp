// Saving and loading.
#include "setting.h"

namespace bench {
namespace {

// Into a file that is not there: what an old one takes to be removed is not what is asked.
template <class Subject>
void Save(benchmark::State& state, std::uint32_t taskCount) {
  const Subject& log = LogOf<Subject>(taskCount, state.range(0));
  const TempFile file;
  for (auto _ : state) {
    Untimed(state, [&] { file.Remove(); });
    log.Save(file.Path());
  }
  Report(state, static_cast<double>(state.range(0)));
}

template <class Subject>
void Load(benchmark::State& state, std::uint32_t taskCount) {
  const TempFile file;
  LogOf<Library>(taskCount, state.range(0)).Save(file.Path());
  std::unique_ptr<Subject> log;
  for (auto _ : state) {
    Untimed(state, [&] { log = std::make_unique<Subject>(); });
    log->Load(file.Path());
    Untimed(state, [&] { log.reset(); });
  }
  Report(state, static_cast<double>(state.range(0)));
}

}  // namespace

void RegisterFiles() {
  for (const std::uint32_t tasks : taskCounts) {
    RegisterSizes({"save", Library::name, tasks, "ns an entry", benchmark::oN}, sizes[3], Save<Library>);
    RegisterSizes({"save", Plain::name, tasks, "ns an entry"}, sizes[2], Save<Plain>);
  }
  for (const std::uint32_t tasks : taskCounts) {
    RegisterSizes({"load", Library::name, tasks, "ns an entry", benchmark::oN}, sizes[3], Load<Library>);
    RegisterSizes({"load", Plain::name, tasks, "ns an entry"}, sizes[2], Load<Plain>);
  }
}

}  // namespace bench
