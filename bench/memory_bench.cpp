// The memory that an operation needs at its peak: one operation in a process of its own, where nothing that
// was freed before can be used again.
#include <fmt/format.h>
#include <malloc.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

#include "peak.h"
#include "setting.h"

namespace bench {
namespace {

// A field of /proc/self/status in bytes.
double StatusBytes(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word != field + ":") continue;
    double kibibytes = 0;
    status >> kibibytes;
    return kibibytes * 1024;
  }
  throw std::runtime_error("the system does not tell " + field);
}

// What `operation` needs beyond what was there before.
template <class Operation>
double PeakBytes(Operation operation) {
  malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << "5";  // the peak is what there is now
  const double before = StatusBytes("VmRSS");
  if (StatusBytes("VmHWM") > before * 1.05) throw std::runtime_error("the system does not forget a peak");
  operation();
  return StatusBytes("VmHWM") - before;
}

template <class Subject>
double PeakOf(const std::string& operation, std::uint32_t taskCount, std::int64_t size) {
  SetController(taskCount, 1, size);
  auto log = std::make_unique<Subject>();
  if (operation == "acquire") return PeakBytes([&] { log->Acquire(1); });
  log->Acquire(1);
  if (operation == "merge") {
    SetController(taskCount, 2, size);
    return PeakBytes([&] { log->Acquire(2); });
  }
  const TempFile file;
  if (operation == "save") return PeakBytes([&] { log->Save(file.Path()); });
  log->Save(file.Path());
  log = std::make_unique<Subject>();
  return PeakBytes([&] { log->Load(file.Path()); });
}

struct ClosePipe {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};

double PeakInChild(const std::string& arguments) {
  const std::string program = std::filesystem::read_symlink("/proc/self/exe");
  const std::unique_ptr<std::FILE, ClosePipe> child(
      popen(fmt::format("'{}' {} {}", program, peakOption, arguments).c_str(), "r"));
  double bytes = 0;
  if (!child || std::fscanf(child.get(), "%lf", &bytes) != 1)
    throw std::runtime_error("no peak of " + arguments);
  return bytes;
}

void RegisterPeak(const std::string& operation, const std::string& subject, std::int64_t largest) {
  const Family family{"memory of " + operation, subject, usualTaskCount, "bytes an entry"};
  auto* sized = Register(family, [=](benchmark::State& state) {
    const std::string arguments = fmt::format("{} {} {}", operation, subject, state.range(0));
    for (auto _ : state) state.counters[value] = PeakInChild(arguments) / static_cast<double>(state.range(0));
    state.SetComplexityN(state.range(0));
  });
  sized->ArgName("entries")->Iterations(1)->Repetitions(1);
  for (const std::int64_t size : sizes)
    if (size >= sizes[2] && size <= largest) sized->Arg(size);
}

}  // namespace

int PrintPeak(const std::string& operation, const std::string& subject, std::int64_t size) {
  const double bytes = subject == Library::name ? PeakOf<Library>(operation, usualTaskCount, size)
                                                : PeakOf<Plain>(operation, usualTaskCount, size);
  fmt::print("{}\n", bytes);
  return 0;
}

void RegisterMemory() {
  for (const char* operation : {"acquire", "merge", "save", "load"}) {
    RegisterPeak(operation, Library::name, sizes[3]);
    if (std::string(operation) != "merge") RegisterPeak(operation, Plain::name, sizes[2]);
  }
}

}  // namespace bench
