#include "threads/machine.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <thread>
#include <vector>

namespace {

constexpr const char* scenario = R"(clock = "stepped"
step = "1ms"
[timer]
resolution_ns = 1000
[scheduler]
slots = 64
[[scheduler.task]]
name = "Monitor"
priority = 3
period = "1ms"
run = "10us"
issues = [{ code = "LOAD", every = 2 }]
[[kernel]]
number = 1
slots = 1024
[[kernel.task]]
name = "Control"
priority = 9
period = "1ms"
run = "300us"
testpoints = [{ name = "Begin" }, { name = "Middle", at = "100us" }]
)";

}  // namespace

void InThreads(const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  for (int number = 0; number < threadCount; ++number) threads.emplace_back(work, number);
  for (std::thread& thread : threads) thread.join();
}

// Each is another file, and so another controller.
Machine::Machine() {
  static int count = 0;
  path_ = testing::TempDir() + "threads_" + std::to_string(getpid()) + "_" + std::to_string(++count);
  std::ofstream(path_) << scenario;
  EXPECT_EQ(TLStartLog(path_.c_str(), nullptr), 0u);
  EXPECT_EQ(TLStartLog((path_ + "/@1").c_str(), nullptr), 0u);
}

Machine::~Machine() { std::remove(path_.c_str()); }
