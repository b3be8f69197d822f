// Prints what is measured.
#include "table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

namespace bench {
namespace {

// By the name under which they are registered.
std::map<std::string, Family>& Families() {
  static std::map<std::string, Family> families;
  return families;
}

// In the order of registration, with their units.
std::vector<std::pair<std::string, std::string>>& Operations() {
  static std::vector<std::pair<std::string, std::string>> operations;
  return operations;
}

std::size_t IndexOf(const std::string& operation) {
  const auto& all = Operations();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](auto& item) { return item.first == operation; });
  return static_cast<std::size_t>(found - all.begin());
}

const char* Formula(benchmark::BigO growth) {
  switch (growth) {
    case benchmark::o1: return "1";
    case benchmark::oLogN: return "log n";
    case benchmark::oN: return "n";
    case benchmark::oNLogN: return "n log n";
    case benchmark::oNSquared: return "n^2";
    case benchmark::oNCubed: return "n^3";
    default: return "unknown";
  }
}

std::string Shown(double number) {
  if (number == 0) return "";
  return fmt::format("{:.{}f}", number, number < 10 ? 2 : number < 100 ? 1 : 0);
}

std::string Ratio(double a, double b) { return a == 0 || b == 0 ? "" : Shown(a / b); }

constexpr char rowFormat[] = "{:<26} {:>9} {:>5} {:>9} {:>8} {:>9} {:>8} {:>9}  {}\n";

}  // namespace

benchmark::internal::Benchmark* Register(const Family& family,
                                         const std::function<void(benchmark::State&)>& run) {
  std::string name = family.operation + "/" + family.subject;
  if (family.taskCount != 0) name += fmt::format("/tasks:{}", family.taskCount);
  if (IndexOf(family.operation) == Operations().size())
    Operations().emplace_back(family.operation, family.unit);
  Families()[name] = family;
  return benchmark::RegisterBenchmark(name.c_str(), run);
}

bool TableReporter::ReportContext(const Context&) { return true; }

void TableReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    const Family& family = Families().at(run.run_name.function_name);
    if (run.error_occurred) {
      fmt::print(stderr, "{}: {}\n", run.benchmark_name(), run.error_message);
    } else if (run.report_big_o || run.report_rms) {
      AddGrowth(family, run);
    } else if (run.run_type == Run::RT_Iteration) {
      AddRun(family, run);
    }
  }
}

void TableReporter::AddRun(const Family& family, const Run& run) {
  const auto given = run.counters.find(value);
  const auto per = run.counters.find(divisor);
  const double shown =
      given != run.counters.end()
          ? given->second.value
          : run.cpu_accumulated_time * 1e9 / static_cast<double>(run.iterations) / per->second.value;
  values_[{IndexOf(family.operation), run.complexity_n, family.taskCount}][family.subject].push_back(shown);
  fmt::print(stderr, "{:<60} {:>10} {}\n", run.benchmark_name(), Shown(shown), family.unit);
}

// A fit needs three sizes to say anything. Its deviation, divided by the units of a second, comes as a run of
// its own behind it.
void TableReporter::AddGrowth(const Family& family, const Run& run) {
  const std::size_t operation = IndexOf(family.operation);
  const auto sizeCount = std::count_if(values_.begin(), values_.end(), [&](const auto& item) {
    return item.first.operation == operation && item.first.taskCount == family.taskCount;
  });
  if (family.subject == "limit" || sizeCount < 3) return;
  if (run.report_rms) {
    growth_.back() += fmt::format("  within {:.0f} %", run.cpu_accumulated_time * 1e11);
    return;
  }
  growth_.push_back(fmt::format("{:<26} {:<8} {:>5}  {:>10.4g} ns x {}", family.operation, family.subject,
                                family.taskCount ? std::to_string(family.taskCount) : "",
                                run.cpu_accumulated_time * 1e9, Formula(run.complexity)));
}

double TableReporter::Median(const Place& place, const std::string& subject) const {
  const auto values = values_.find(place);
  if (values == values_.end()) return 0;
  const auto found = values->second.find(subject);
  if (found == values->second.end()) return 0;
  std::vector<double> sorted = found->second;
  std::sort(sorted.begin(), sorted.end());
  return (sorted[(sorted.size() - 1) / 2] + sorted[sorted.size() / 2]) / 2;
}

void TableReporter::PrintRow(const Place& place) const {
  const double library = Median(place, "tasklog");
  const double plain = Median(place, "plain");
  const double limit = Median({place.operation, place.size, 0}, "limit");
  if (library == 0 && plain == 0) return;  // a limit stands beside what it limits
  const auto& [operation, unit] = Operations()[place.operation];
  fmt::print(rowFormat, operation, place.size, place.taskCount ? std::to_string(place.taskCount) : "",
             Shown(library), Shown(limit), Ratio(library, limit), Shown(plain), Ratio(plain, library), unit);
}

void TableReporter::Finalize() {
  fmt::print(rowFormat, "operation", "entries", "tasks", "tasklog", "limit", "x limit", "plain", "x tasklog",
             "unit");
  for (const auto& [place, values] : values_) PrintRow(place);
  if (growth_.empty()) return;
  fmt::print("\nthe time of one operation, for n entries\n");
  for (const std::string& line : growth_) fmt::print("{}\n", line);
}

}  // namespace bench
