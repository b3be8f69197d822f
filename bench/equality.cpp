// Compares the library with the plain model, through all that is measured.
#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "ring.h"
#include "setting.h"

namespace bench {
namespace {

constexpr std::int64_t size = 6000;
constexpr std::size_t slots = 2048;  // of a buffer that is polled

// The log that all appends which are measured lead to, one after the other.
template <class Subject>
Subject FilledLog(std::uint32_t taskCount) {
  Subject log;
  for (const int kernel : {1, 1, 2, 3}) {  // kernel 1 twice: the second time finds nothing new
    SetController(taskCount, static_cast<std::uint32_t>(kernel), size);
    log.Acquire(kernel);
  }
  const std::vector<Record> records = MakeRecords(taskCount, 1, 2 * size);
  for (std::size_t written = size; written <= records.size(); written += 500) {
    TheController().ring = RingOf(std::span(records).subspan(written - slots + 1, slots - 1), slots, written);
    log.Acquire(1);
  }
  return log;
}

template <class Subject>
std::string Bytes(const Subject& log) {
  const TempFile file;
  log.Save(file.Path());
  std::ifstream stream(file.Path(), std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

template <class Subject>
Subject LoadedLog(const std::string& bytes) {
  const TempFile file;
  std::ofstream(file.Path(), std::ios::binary) << bytes;
  Subject log;
  log.Load(file.Path());
  return log;
}

template <class Subject>
std::vector<std::uint64_t> Answers(const Subject& log) {
  std::vector<std::uint64_t> answers{log.StartTime(), log.StopTime(), log.SumOfTimes()};
  const std::uint64_t third = (log.StopTime() - log.StartTime()) / 3;
  for (const char* name : {"Task003", "Point7", ""}) {
    const auto category = *name ? log.CategoryNamed(name) : nullptr;
    for (const std::uint64_t types : {std::uint64_t{0}, TL_LOGS_TESTPOINTS, UINT64_MAX, std::uint64_t{0x300}})
      for (const std::uint64_t from : {std::uint64_t{0}, log.StartTime() + third, log.StopTime()})
        answers.push_back(log.Count(category, types, from, from + third));
  }
  return answers;
}

bool Agree(const char* what, const auto& library, const auto& plain) {
  const auto [first, second] = std::mismatch(library.begin(), library.end(), plain.begin(), plain.end());
  if (first == library.end() && second == plain.end()) return true;
  fmt::print(stderr, "tasklog and the plain model differ in {} {}\n", what, first - library.begin());
  return false;
}

bool LogsAgree(const Library& library, const Plain& plain) {
  return Agree("entry", library.Entries(), plain.Entries()) &&
         Agree("category", library.Categories(), plain.Categories()) &&
         Agree("answer", Answers(library), Answers(plain));
}

}  // namespace

bool SubjectsAgree() {
  for (const std::uint32_t tasks : taskCounts) {
    const auto library = FilledLog<Library>(tasks);
    const auto plain = FilledLog<Plain>(tasks);
    const std::string bytes = Bytes(library);
    if (!LogsAgree(library, plain) || !Agree("byte", bytes, Bytes(plain)) ||
        !LogsAgree(LoadedLog<Library>(bytes), LoadedLog<Plain>(bytes)))
      return false;
  }
  return true;
}

}  // namespace bench
