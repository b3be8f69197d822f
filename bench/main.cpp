// Measures the library beside the plain model and the machine's limits. Takes the options of Google
// Benchmark, such as --benchmark_filter.
#include <fmt/format.h>
#include <malloc.h>

#include <exception>
#include <string_view>

#include "peak.h"
#include "setting.h"

namespace {

int Measure(int argumentCount, char** arguments) {
  bench::RegisterAppends();
  bench::RegisterFiles();
  bench::RegisterQueries();
  bench::RegisterAnalyses();
  bench::RegisterMemory();
  bench::RegisterLimits();
  benchmark::Initialize(&argumentCount, arguments);
  if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) return 2;
  bench::TableReporter reporter;
  if (benchmark::RunSpecifiedBenchmarks(&reporter) > 0) return 0;
  fmt::print(stderr, "no benchmark has such a name\n");
  return 2;
}

}  // namespace

int main(int argumentCount, char** arguments) try {
  // Large blocks come from the system and go back to it, as in a process that does an operation once: without
  // this all but the first would be given memory that is at hand already.
  mallopt(M_MMAP_THRESHOLD, 1 << 20);
  if (argumentCount == 5 && std::string_view(arguments[1]) == bench::peakOption)
    return bench::PrintPeak(arguments[2], arguments[3], std::stoll(arguments[4]));
  return Measure(argumentCount, arguments);
} catch (const std::exception& failure) {
  fmt::print(stderr, "{}\n", failure.what());
  return 1;
}
