// Makes the files that bench/peers and bench/command give to programs, and times what they are compared with.
#include <fmt/format.h>
#include <fmt/os.h>

#include <ctime>
#include <exception>
#include <string>
#include <tasklog/tasklog.hpp>
#include <unordered_map>
#include <vector>

#include "controller.h"
#include "ring.h"

namespace bench {
namespace {

constexpr char usage[] =
    "usage: tasklog_bench_files log ENTRIES TASKS FILE   a TaskLog file\n"
    "       tasklog_bench_files csv FILE CSV             the same as a table of numbers\n"
    "       tasklog_bench_files count FILE               times load and count\n";

void Check(const tasklog::Status& status) {
  if (!status) throw std::runtime_error(status.Text());
}

tasklog::Log Loaded(const std::string& path) {
  tasklog::Log log;
  Check(log.AppendFromFile(path.c_str()));
  return log;
}

void MakeLog(std::size_t count, std::uint32_t taskCount, const std::string& path) {
  TheController() = {taskCount, FullRing(MakeRecords(taskCount, 1, count))};
  tasklog::Log log;
  Check(log.AppendFromTarget("bench", 1));
  Check(log.SaveAsFile(path.c_str()));
}

// Time, type, and the numbers of subject and running task; an empty field where there is none.
void MakeCsv(const tasklog::Log& log, const std::string& path) {
  std::unordered_map<TLCategory, std::string> numbers{{nullptr, ""}};
  for (const auto& category : log.Categories())
    numbers.emplace(category.Handle(), std::to_string(numbers.size()));
  auto out = fmt::output_file(path);
  for (const auto& entry : log.Entries())
    out.print("{},{},{},{}\n", entry.Timestamp(), entry.Type(),
              numbers.at(TLEntryGetCategory(entry.Handle(), 0)),
              numbers.at(TLEntryGetCategory(entry.Handle(), 1)));
}

double ProcessorSeconds() {
  std::timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

template <class Step>
double Seconds(Step step) {
  const double begin = ProcessorSeconds();
  step();
  return ProcessorSeconds() - begin;
}

// Prints the processor seconds of a load, those of a count, and the bounds and answer of that count: the
// testpoints in the middle third of the log.
void TimeCount(const std::string& path) {
  tasklog::Log log;
  const double load = Seconds([&] { Check(log.AppendFromFile(path.c_str())); });
  const std::uint64_t third = (log.StopTime() - log.StartTime()) / 3;
  const std::uint64_t from = log.StartTime() + third;
  std::uint64_t answer = 0;
  const double count = Seconds(
      [&] { answer = log.EntriesCount({.types = TL_LOGS_TESTPOINTS, .from = from, .to = from + third}); });
  fmt::print("{:.6f} {:.9f} {} {} {}\n", load, count, from, from + third, answer);
}

int Run(const std::vector<std::string>& words) {
  const std::string what = words.empty() ? "" : words[0];
  if (what == "log" && words.size() == 4) {
    MakeLog(std::stoull(words[1]), static_cast<std::uint32_t>(std::stoul(words[2])), words[3]);
  } else if (what == "csv" && words.size() == 3) {
    MakeCsv(Loaded(words[1]), words[2]);
  } else if (what == "count" && words.size() == 2) {
    TimeCount(words[1]);
  } else {
    fmt::print(stderr, usage);
    return 2;
  }
  return 0;
}

}  // namespace
}  // namespace bench

int main(int argumentCount, char** arguments) try {
  return bench::Run({arguments + 1, arguments + argumentCount});
} catch (const std::exception& failure) {
  fmt::print(stderr, "tasklog_bench_files: {}\n", failure.what());
  return 1;
}
