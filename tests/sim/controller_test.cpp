// Controllers on the wall clock, and what a second process finds.
#include "controller.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "parser.h"
#include "ringreader.h"
#include "status.h"

namespace sim {
namespace {

using simtest::RingReader;
using simtest::RingRecord;

constexpr uint64_t ms = 1'000'000;
constexpr int64_t bufferAddress = 0x20000000;
constexpr int64_t otherBufferAddress = 0x22000000;
constexpr uint32_t bufferWords = 2 + 2 * 512;

// Two controllers over one store stand for two processes.
class WallClock : public testing::Test {
 protected:
  WallClock()
      : path_(testing::TempDir() + "sim_state_" +
              testing::UnitTest::GetInstance()->current_test_info()->name()) {
    std::remove(path_.c_str());
  }
  ~WallClock() override { std::remove(path_.c_str()); }

  std::unique_ptr<Controller> NewProcess(uint32_t slots = 512) {
    Scenario scenario = ParseScenario(R"([timer]
resolution_ns = 1000
[[kernel]]
number = 1
slots = 512
[scheduler]
slots = 512
task = [{name = "A", priority = 9, period = "3ms", run = "1ms", jitter = "900us"},
        {name = "Rare", priority = 9, period = "70ms", offset = "35ms", run = "1ms"}])",
                                      "wall.toml");
    scenario.processors[0].slotCount = slots;
    return std::make_unique<Controller>(std::move(scenario), StateStore(path_), [this] {
      if (const auto once = std::exchange(meanwhile_, nullptr)) once();
      return wallNs_;
    });
  }

  static std::vector<RingRecord> Read(Controller& controller, int64_t address = bufferAddress) {
    std::vector<uint32_t> words(bufferWords);
    controller.ReadMemory(address, words.data(), bufferWords);
    return RingReader(words).Records();
  }

  std::string path_;
  std::function<void()> meanwhile_;  // when the clock is next read
  uint64_t wallNs_ = 5'000'000 * ms;
};

TEST_F(WallClock, IsTheSameControllerInASecondProcess) {
  const auto first = NewProcess();
  first->PutText("Scheduler.Logger.TriggerTask", "");  // the first contact: power-on
  wallNs_ += 1235 * ms;
  first->CallProcedure("Scheduler.Logger.Start()");
  wallNs_ += 250 * ms;
  const auto second = NewProcess();
  const auto records = Read(*second);
  EXPECT_GT(records.size(), 80u);
  // Tasks keep in step with whole seconds, wherever the logger was started.
  EXPECT_EQ(std::count(records.begin(), records.end(), RingRecord{2'237'000, recordFromIdle, 0x00010001}), 1);
  EXPECT_EQ(Read(*first), records);
}

TEST_F(WallClock, ShowsARestartToTheOtherProcess) {
  const auto first = NewProcess();
  first->CallProcedure("Scheduler.Logger.Start()");
  const auto second = NewProcess();
  wallNs_ += 100 * ms;
  second->PutText("Scheduler.Logger.TriggerTask", "Rare");
  second->CallProcedure("Scheduler.Logger.Start()");
  EXPECT_EQ(Read(*first).size(), 1u);
  wallNs_ += 250'000 * ms;
  const auto frozen = Read(*first);
  EXPECT_EQ(Read(*second), frozen);
  EXPECT_LT(frozen.back().time, 2'000'000u);
}

// The other process comes in right where this one has looked at the state and has not written it yet.
TEST_F(WallClock, LosesNoStartOfTwoAtOnce) {
  const auto second = NewProcess();
  const auto first = NewProcess();
  std::thread other;
  meanwhile_ = [&] {
    other = std::thread([&] { second->CallProcedure("Kernel.1.Logger.Start()"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  };
  first->CallProcedure("Scheduler.Logger.Start()");
  other.join();
  const auto third = NewProcess();
  for (const int64_t address : {bufferAddress, otherBufferAddress})
    EXPECT_FALSE(Read(*third, address).empty());
}

TEST_F(WallClock, ForgetsAfterFiveMinutesWithoutContact) {
  const auto first = NewProcess();
  first->CallProcedure("Scheduler.Logger.Start()");
  wallNs_ += 299'000 * ms;
  EXPECT_FALSE(Read(*NewProcess()).empty());
  wallNs_ += 301'000 * ms;
  EXPECT_TRUE(Read(*NewProcess()).empty());
  EXPECT_TRUE(Read(*first).empty());
}

// Catching up must not take longer and longer, so a buffer with room for more holds only the last minute.
TEST_F(WallClock, TakesALongRunUpFromItsLastMinute) {
  constexpr uint32_t slots = 1'000'000;
  NewProcess(slots)->CallProcedure("Scheduler.Logger.Start()");
  for (int minutes = 0; minutes < 20; minutes += 4) {
    wallNs_ += 240'000 * ms;
    Read(*NewProcess(slots));
  }
  std::vector<uint32_t> words(2 + 2 * slots);
  NewProcess(slots)->ReadMemory(bufferAddress, words.data(), static_cast<uint32_t>(words.size()));
  const auto records = RingReader(words).Records();
  EXPECT_EQ(records.front().time, 1'000'000u + 1'140'000'000u);
  EXPECT_NEAR(static_cast<double>(records.back().time), 1e6 + 1'200e6, 3000);
}

TEST_F(WallClock, SurvivesDamagedAndForeignFiles) {
  for (const char* text :
       {"", "hello", "simulated controller, state 1\npower-on 99999999999999999999\n",
        "simulated controller, state 1\npower-on 1\ncontact x\n",
        "simulated controller, state 1\npower-on 4999999000000\ncontact 9999999000000\nlogger -1 0 \n",
        "simulated controller, state 1\npower-on 4999999000000\ncontact 4999999000000\nlogger -1 5 \n",
        "simulated controller, state 1\npower-on 4999990000000\ncontact 4999999000000\nlogger -1 0 "
        "Nobody\n"}) {
    std::ofstream(path_) << text;
    const auto controller = NewProcess();
    EXPECT_TRUE(Read(*controller).empty()) << text;
    controller->CallProcedure("Scheduler.Logger.Start()");
    EXPECT_EQ(Read(*NewProcess()).size(), 1u) << text;
  }
}

}  // namespace
}  // namespace sim
