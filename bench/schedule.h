// Records as the loggers of a controller write them while it schedules its tasks: the same ones on every
// machine and in every run.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace bench {

struct Record {
  std::uint64_t time;  // ticks
  std::uint32_t type;
  std::uint32_t id;
};

// Identifiers of what a controller has; the other half is in controller.cpp.
inline constexpr std::uint32_t testpointCount = 20;
constexpr std::uint32_t TaskId(std::uint32_t index) { return 0x100000 + 64 * index; }
constexpr std::uint32_t TestpointId(std::uint32_t index) { return 0x9000 + 16 * index; }

// One kernel. Tasks are woken, preempt each other, pass testpoints and finish. A wake-up is an event and a
// switch of one time, so that every third record shares its time with the one before. All types of record
// occur, no two records are equal, and the lower 28 bits of the time wrap soon after the start and then every
// half a million records.
class Schedule {
 public:
  // Kernels run over the same period, each in its own order.
  Schedule(std::uint32_t taskCount, std::uint32_t kernel);
  Record Next();

 private:
  static constexpr std::size_t mostPerStep = 2;

  void Step();
  void Wake();
  void Finish();
  void Put(std::uint32_t type, std::uint32_t id) { step_[stepEnd_++] = {time_, type, id}; }
  std::uint32_t Below(std::uint32_t bound) { return static_cast<std::uint32_t>(random_() % bound); }

  std::uint32_t taskCount_;
  std::mt19937_64 random_;
  std::uint64_t time_;
  std::vector<std::uint32_t> running_{0};      // indices of the tasks begun and not finished, idle task first
  std::array<Record, mostPerStep> step_ = {};  // records of one time
  std::size_t stepNext_ = 0;
  std::size_t stepEnd_ = 0;
};

std::vector<Record> MakeRecords(std::uint32_t taskCount, std::uint32_t kernel, std::size_t count);

}  // namespace bench
