// Collects what is measured and prints it as tables.
#pragma once

#include <benchmark/benchmark.h>

#include <compare>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace bench {

// Benchmarks of one operation of one subject, at several sizes.
struct Family {
  std::string operation;
  std::string subject;          // of Library or Plain its name; "limit" for what no code can undercut
  std::uint32_t taskCount = 0;  // 0 where tasks do not matter
  std::string unit;             // of the value, such as "ns an entry"
  benchmark::BigO growth = benchmark::oAuto;  // with the entries, as it is claimed; oAuto: what fits best
};

// Counters of a benchmark. Its time is divided by `divisor`, such as the number of entries, and given in ns;
// a benchmark that measures no time sets `value`.
inline constexpr char divisor[] = "divisor";
inline constexpr char value[] = "value";

// A benchmark states its size with SetComplexityN().
benchmark::internal::Benchmark* Register(const Family& family,
                                         const std::function<void(benchmark::State&)>& run);

// Prints each value when it is there. At the end prints, from the medians of the repetitions, library, limit
// and plain model side by side, then how each operation grows. Times are those of the processor: they count
// the system's work for the program, and not what other programs do in between.
class TableReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  struct Place {
    std::size_t operation;  // in the order of registration
    std::int64_t size;
    std::uint32_t taskCount;
    auto operator<=>(const Place&) const = default;
  };
  using Values = std::map<std::string, std::vector<double>>;  // by subject

  void AddRun(const Family& family, const Run& run);
  void AddGrowth(const Family& family, const Run& run);
  double Median(const Place& place, const std::string& subject) const;  // 0 when there is none
  void PrintRow(const Place& place) const;

  std::map<Place, Values> values_;
  std::vector<std::string> growth_;
};

}  // namespace bench
