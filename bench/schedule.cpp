// Records of a schedule.
#include "schedule.h"

#include <algorithm>

namespace bench {
namespace {

constexpr std::uint64_t startTime = 0x10FF00000;  // some 2000 records before a wrap of the lower 28 bits
constexpr std::uint32_t longestStep = 1500;       // ticks
constexpr std::size_t deepest = 6;                // tasks begun at one time
constexpr std::uint32_t issueCodes[] = {0x4F56524E, 0x4C415445, 0x53544B4F, 0x48454150};  // OVRN and others

enum RecordType : std::uint32_t { event = 2, plainSwitch = 4, testpoint = 6, issue = 7, firstNameless = 8 };

}  // namespace

Schedule::Schedule(std::uint32_t taskCount, std::uint32_t kernel)
    : taskCount_(taskCount), random_(kernel), time_(startTime + kernel) {}

Record Schedule::Next() {
  if (stepNext_ == stepEnd_) Step();
  return step_[stepNext_++];
}

void Schedule::Step() {
  stepNext_ = stepEnd_ = 0;
  time_ += 1 + Below(longestStep);
  const std::uint32_t lot = Below(1000);
  if (lot < 780) return lot % 2 == 0 ? Wake() : Finish();
  if (lot < 980) return Put(testpoint, TestpointId(Below(testpointCount)));
  if (lot < 995) return Put(issue, issueCodes[Below(4)]);
  Put(firstNameless + Below(7), TaskId(Below(taskCount_)));
}

// Tasks of low index run more often than others, as those of a short period do.
void Schedule::Wake() {
  if (running_.size() == std::min<std::size_t>(deepest, taskCount_ / 2)) return Finish();
  std::uint32_t task = 0;
  do {
    task = std::min(Below(taskCount_), Below(taskCount_));
  } while (std::find(running_.begin(), running_.end(), task) != running_.end());
  constexpr std::uint32_t switches[] = {0, 1, 3, 4, 5};
  Put(event, TaskId(task));
  Put(switches[Below(5)], TaskId(task));
  running_.push_back(task);
}

void Schedule::Finish() {
  if (running_.size() == 1) return Wake();
  running_.pop_back();
  Put(plainSwitch, TaskId(running_.back()));
}

std::vector<Record> MakeRecords(std::uint32_t taskCount, std::uint32_t kernel, std::size_t count) {
  Schedule schedule(taskCount, kernel);
  std::vector<Record> records(count);
  for (Record& record : records) record = schedule.Next();
  return records;
}

}  // namespace bench
