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

using simtest::RingRecord;

constexpr uint64_t ms = 1'000'000;
constexpr int64_t bufferAddress = 0x20000000;
constexpr int64_t otherBufferAddress = 0x22000000;
constexpr const char* triggerTask = "Scheduler.Logger.TriggerTask";
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

  std::unique_ptr<Controller> NewProcess(uint32_t cells = 512) {
    Scenario scenario = ParseScenario(R"([timer]
resolution_ns = 1000
[[kernel]]
number = 1
slots = 512
task = [{name = "Late", priority = 9, appears = "50s", run = "1ms"}]
[scheduler]
slots = 512
task = [{name = "A", priority = 9, period = "3ms", run = "1ms", jitter = "900us"},
        {name = "Rare", priority = 9, period = "70ms", offset = "35ms", run = "1ms"}])",
                                      "wall.toml");
    scenario.processors[0].cellCount = cells;
    return std::make_unique<Controller>(std::move(scenario), StateStore(path_), [this] {
      if (const auto once = std::exchange(meanwhile_, nullptr)) once();
      return wallNs_;
    });
  }

  static std::vector<RingRecord> Read(Controller& controller, int64_t address = bufferAddress) {
    std::vector<uint32_t> words(bufferWords);
    controller.ReadMemory(address, words.data(), bufferWords);
    return simtest::RecordsOf(words);
  }

  std::string path_;
  std::function<void()> meanwhile_;  // when the clock is next read
  uint64_t wallNs_ = 5'000'000 * ms;
};

TEST_F(WallClock, IsTheSameControllerInASecondProcess) {
  const auto first = NewProcess();
  first->PutText(triggerTask, "");  // the first contact: power-on
  wallNs_ += 1235 * ms;
  first->CallProcedure("Scheduler.Logger.Start()");
  wallNs_ += 250 * ms;
  const auto second = NewProcess();
  const auto records = Read(*second);
  EXPECT_GT(records.size(), 80u);
  EXPECT_EQ(Read(*first), records);
  // Tasks keep in step with whole seconds, wherever the logger was started. That this cycle takes 1075207 ns
  // was computed from the seed and the second, apart from this program.
  EXPECT_EQ(std::count(records.begin(), records.end(), RingRecord{2'237'000, recordFromIdle, 0x00010001}), 1);
  EXPECT_EQ(std::count(records.begin(), records.end(), RingRecord{2'238'075, recordCycleDone, 0x00010003}),
            1);
}

TEST_F(WallClock, ShowsARestartToTheOtherProcess) {
  const auto first = NewProcess();
  first->CallProcedure("Scheduler.Logger.Start()");
  const auto second = NewProcess();
  wallNs_ += 100 * ms;
  second->PutText(triggerTask, "Rare");
  second->CallProcedure("Scheduler.Logger.Start()");
  EXPECT_EQ(Read(*first).size(), 1u);
  wallNs_ += 250'000 * ms;
  const auto frozen = Read(*first);
  EXPECT_EQ(Read(*second), frozen);
  EXPECT_LT(frozen.back().time, 2'000'000u);
  EXPECT_EQ(first->GetVariable({}, triggerTask), Value("Rare"));
  // A trigger that was written and not yet started with is no other process's business.
  second->PutText(triggerTask, "A");
  wallNs_ += 11'000 * ms;
  Read(*second);
  EXPECT_EQ(Read(*NewProcess()), frozen);
  // Each start arms the logger anew.
  second->CallProcedure("Scheduler.Logger.Start()");
  wallNs_ += 1000 * ms;
  EXPECT_LT(Read(*second).back().time, 1'000'000u + 261'800'000u);
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

TEST_F(WallClock, HasATaskThatAppearsSomeTimeAfterTheStart) {
  const auto controller = NewProcess();
  Read(*controller);
  wallNs_ += 100'000 * ms;
  controller->CallProcedure("Kernel.1.Logger.Start()");
  for (const size_t count : {1u, 2u}) {
    EXPECT_EQ(controller->TaskIds(1).size(), count);
    wallNs_ += 50'000 * ms;
    Read(*controller, otherBufferAddress);
  }
}

TEST_F(WallClock, ForgetsAfterFiveMinutesWithoutContact) {
  const auto first = NewProcess();
  first->CallProcedure("Scheduler.Logger.Start()");
  wallNs_ += 299'000 * ms;
  EXPECT_FALSE(Read(*NewProcess()).empty());
  for (int contact = 0; contact < 3; ++contact, wallNs_ += 200'000 * ms) Read(*first);
  EXPECT_FALSE(Read(*NewProcess()).empty());
  first->PutText(triggerTask, "Rare");
  wallNs_ += 301'000 * ms;
  EXPECT_TRUE(Read(*NewProcess()).empty());
  for (int contact = 0; contact < 2; ++contact) EXPECT_TRUE(Read(*first).empty());
  EXPECT_TRUE(Read(*NewProcess()).empty());
  EXPECT_EQ(first->GetVariable({}, triggerTask), Value(""));
}

// Catching up must not take longer and longer, so a buffer with room for more holds only the last minute.
TEST_F(WallClock, TakesALongRunUpFromItsLastMinute) {
  constexpr uint32_t cells = 1'000'000;
  const auto oldest = [](Controller& controller) {
    std::vector<uint32_t> words(2 + 2 * cells);
    controller.ReadMemory(bufferAddress, words.data(), static_cast<uint32_t>(words.size()));
    return simtest::RecordsOf(words).front().time - 1'000'000;
  };
  const auto first = NewProcess(cells);
  first->CallProcedure("Scheduler.Logger.Start()");
  for (int minutes = 0; minutes < 15; minutes += 3, wallNs_ += 180'000 * ms) {
    Read(*NewProcess(cells), otherBufferAddress);
  }
  EXPECT_EQ(oldest(*NewProcess(cells)), 0u);
  wallNs_ += 1 * ms;
  EXPECT_EQ(oldest(*NewProcess(cells)), 840'001'000u);
  EXPECT_EQ(oldest(*first), 840'001'000u);
}

// Too much work is refused, read by read. The kernel takes 811 steps, and 891 where each cycle leaves a timer
// of its deadline behind.
TEST(Steps, AreBounded) {
  Scenario scenario = ParseScenario(R"(clock = "stepped"
step = "1s"
timer = {resolution_ns = 1}
[scheduler]
task = [{name = "Endless", priority = 9, period = "2ns", run = "1ns"}]
[[kernel]]
number = 1
task = [{name = "R", priority = 9, period = "10ms", run = "1us", events = [{task = "L"}]},
        {name = "L", priority = 5, run = "1us", deadline = "100ms"}])",
                                    "my.toml");
  scenario.mostSteps = 850;
  const auto answersOfTwoReads = [&scenario](const char* logger, int64_t address) {
    Controller controller(scenario, StateStore(), [] { return uint64_t{0}; });
    controller.CallProcedure(logger);
    std::string answers;
    uint32_t word = 0;
    for (int i = 0; i < 2; ++i) try {
        controller.ReadMemory(address, &word, 1);
      } catch (const Failure& failure) {
        answers += failure.text.substr(0, failure.text.find(';')) + '\n';
      }
    return answers;
  };
  const std::string text = "too much to do at one read: more than 850 steps, most of them ";
  const std::string endless = "my.toml:5: " + text + "for task 'Endless'\n";
  const std::string wraps = "my.toml: " + text + "because the tick field wraps\n";
  EXPECT_EQ(answersOfTwoReads("Scheduler.Logger.Start()", bufferAddress), endless + endless);
  EXPECT_EQ(answersOfTwoReads("Kernel.1.Logger.Start()", otherBufferAddress), "");
  scenario.tickBits = 16;
  EXPECT_EQ(answersOfTwoReads("Kernel.1.Logger.Start()", otherBufferAddress), wraps + wraps);
}

TEST_F(WallClock, SurvivesDamagedAndForeignFiles) {
  for (const char* text : {"", "hello", "1\npower-on 99999999999999999999\n", "1\npower-on 1\ncontact x\n",
                           "2\npower-on 4999999000000\ncontact 4999999000000\nlogger -1 0 \n",
                           "1\npower-on 4999999500000\ncontact 4999999000000\nlogger -1 0 \n",
                           "1\npower-on 4999999000000\ncontact 9999999000000\nlogger -1 0 \n",
                           "1\npower-on 4999999000000\ncontact 4999999000000\nlogger -1 5 \n",
                           "1\npower-on 4999999000000\ncontact 4999999000000\nlogger -1 0 \nhello\n",
                           "1\npower-on 4999990000000\ncontact 4999999000000\nlogger -1 0 Nobody\n"}) {
    std::ofstream(path_) << "simulated controller, state " << text;
    const auto controller = NewProcess();
    EXPECT_TRUE(Read(*controller).empty()) << text;
    controller->CallProcedure("Scheduler.Logger.Start()");
    EXPECT_EQ(Read(*NewProcess()).size(), 1u) << text;
  }
}

}  // namespace
}  // namespace sim
