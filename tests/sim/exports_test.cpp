// The exported functions: what they refuse and how, how far they write.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>

#include "status.h"
#include "support/taskfile.h"
#include "target/access.h"
#include "targets.h"

namespace {

// A controller in a file of its own, so that each test meets one of its own. Kernel 2 has 243 tasks.
class TestController {
 public:
  explicit TestController(const std::string& more = {}) {
    std::ofstream file(file_.Path());
    file << R"(clock = "stepped"
step = "10ms"
timer = {resolution_ns = 1000, cpu = "PPC603-and-more"}
scheduler = {slots = 64}
[[kernel]]
number = 1
slots = 256
task = [{name = "Control", priority = 200, slice = "1500us", period = "1ms", run = "300us", testpoints = [{name = "Begin"}]}]
[[kernel]]
number = 2
task = [)";
    for (int i = 1; i < 243; ++i) file << "{name = \"T" << i << "\", priority = 9, run = \"1ms\"}, ";
    file << "]\n[[kernel]]\nnumber = 0\n" << more;
  }
  const char* Target() const { return file_.CPath(); }
  std::string Kernel(int number) const { return file_.Path() + "/@" + std::to_string(number); }

 private:
  TempFile file_;
};

constexpr int64_t kernelBuffer = 0x22000000;  // 2 + 2 * 256 words
constexpr const char* trigger = "Scheduler.Logger.TriggerTask";
constexpr uint32_t untouched = 0xCCCCCCCC;

TEST(Exports, RefuseWhatTheControllerDoesNotHave) {
  const TestController controller;
  const std::string kernel1 = controller.Kernel(1);
  double number = 0;
  char text[256] = "";
  uint32_t words[4];
  for (const char* name :
       {"Target.CpuClock", "Target.Mpu", "", "Kernel.3.Logger.BufferSize", "Kernel.01.Logger.BufferSize",
        "Kernel..Logger.BufferSize", "Kernel.1.Logger.Buffer", "Kernel.4294967297.Logger.BufferSize",
        "Watchpoint.Entity!Object1", "Watchpoint.Entity!Object00", "Watchpoint.Entity!Object0x",
        "Watchpoint.Entity.End.Prop.Address"}) {
    EXPECT_EQ(GetVariable(kernel1.c_str(), name, &number, 0), 0x50201u) << name;
    EXPECT_EQ(PutVariable(controller.Target(), name, "A", 2), 0x50201u) << name;
  }
  for (const char* name : {"Kernel.3.Logger.Start()", "Kernel.1.Logger.Start"})
    EXPECT_EQ(CallProcedure(controller.Target(), name, &number), 0x50401u) << name;
  for (const int64_t address :
       {kernelBuffer + 256 * 8 + 4, kernelBuffer - 4, kernelBuffer + 1, int64_t{0}, INT64_MIN, INT64_MAX})
    EXPECT_EQ(GetBlock32(controller.Target(), address, words, 2), sim::badAddress) << address;
  EXPECT_EQ(GetBlock32(controller.Target(), kernelBuffer, words, 0xFFFFFFFF), sim::badAddress);
  EXPECT_EQ(GetBlock32(controller.Target(), kernelBuffer + 256 * 8, words, 2), 0u);
  EXPECT_EQ(GetVariable(controller.Target(), "Target.Mpu.Resolution", text, 16), sim::wrongType);
  EXPECT_EQ(GetVariable(controller.Target(), "Target.Cpu", text, 0), sim::wrongType);
  EXPECT_EQ(PutVariable(controller.Target(), "Target.Cpu", "A", 2), sim::readOnly);
  EXPECT_EQ(DbgTasksList(controller.Kernel(3).c_str(), words, 0), sim::unknownKernel);
  EXPECT_EQ(DbgTasksList((controller.Kernel(99999999) + "99").c_str(), words, 0), sim::unknownKernel);
  EXPECT_EQ(DbgTasksList(controller.Target(), words, 0), 0u);
  EXPECT_EQ(words[0], 3 * 4u);  // the count, and the idle tasks of the scheduler and of kernel 0
  EXPECT_EQ(DbgTaskGetName(controller.Target(), 0x00050001, text, 9), sim::unknownTask);
  EXPECT_EQ(DbgTaskGetData(controller.Target(), 0x00020001, 2, words, 4), sim::unknownTaskItem);
  EXPECT_EQ(sim::TextOf(sim::unknownTaskItem), sim::GeneralTextOf(sim::unknownTaskItem));
}

TEST(Exports, RefuseBadArguments) {
  const TestController controller;
  double number = 0;
  uint32_t words[4];
  EXPECT_EQ(GetVariable(nullptr, "Target.Cpu", &number, 0), sim::badArgument);
  EXPECT_EQ(GetVariable(controller.Target(), nullptr, &number, 0), sim::badArgument);
  EXPECT_EQ(PutVariable(controller.Target(), trigger, "A", 0), sim::badArgument);
  EXPECT_EQ(CallProcedure(controller.Target(), "Scheduler.Logger.Start()", nullptr), sim::badArgument);
  EXPECT_EQ(GetBlock32(controller.Target(), kernelBuffer, nullptr, 1), sim::badArgument);
  EXPECT_EQ(DbgTaskGetName(controller.Target(), 0x00010001, nullptr, 1), sim::badArgument);
  EXPECT_EQ(DbgTaskGetData(controller.Target(), 0x00020001, taskDataPriority, words, 3), sim::badArgument);
  EXPECT_EQ(GetErrorDescription("", 0, nullptr, 1), sim::badArgument);
  for (const uint32_t size : {3u, 36u, 44u, 972u})  // not what is left of a list
    EXPECT_EQ(DbgTasksList(controller.Kernel(2).c_str(), words, size), sim::badArgument) << size;
}

TEST(Exports, WriteNoFartherThanTheyAreGivenRoom) {
  const TestController controller;
  char text[12] = "xxxxxxxxxxx";
  EXPECT_EQ(GetVariable(controller.Target(), "Target.Cpu", text, 10), 0u);
  EXPECT_EQ(std::string(text, 11), std::string("PPC603-an\0x", 11));
  EXPECT_EQ(DbgTaskGetName(controller.Target(), 0x00020001, text, 4), 0u);
  EXPECT_EQ(std::string(text, 5), (std::string{'C', 'o', 'n', '\0', '0'}));
  EXPECT_EQ(GetErrorDescription("", 0x40CA0020, text, 5), 0u);
  EXPECT_EQ(std::string(text, 6), (std::string{'T', 'h', 'e', ' ', '\0', '3'}));
  EXPECT_EQ(PutVariable(controller.Target(), trigger, "ABC", 2), 0u);
  EXPECT_EQ(GetVariable(controller.Target(), trigger, text, 10), 0u);
  EXPECT_STREQ(text, "AB");
  // The list of 243 tasks comes in portions of 120, each but the last with a word that says so.
  std::vector<uint32_t> words(245, untouched);
  const std::string kernel = controller.Kernel(2);
  struct Portion {
    uint32_t at, size, last,
        behind;  // where it goes, what is left then; its last identifier, the word behind that
  };
  for (const Portion& p : {Portion{0, 976, 0x00030078, taskListContinues},
                           {121, 492, 0x000300F0, taskListContinues},
                           {241, 12, 0x000300F3, untouched}}) {
    ASSERT_EQ(DbgTasksList(kernel.c_str(), &words[p.at], p.size), 0u);
    const auto behind = std::find(words.begin() + p.at, words.end(), p.behind);
    EXPECT_EQ(behind[-1], p.last);
    EXPECT_TRUE(std::all_of(behind + 1, words.end(), [](uint32_t word) { return word == untouched; }));
  }
  EXPECT_EQ(words[0], 243u);
}

TEST(Faults, StrikeFromEveryAndCount) {
  const auto failingCalls = [](const std::string& keys) {
    const TestController controller("[[fault]]\ncall = \"PutVariable\"\nname = \"" + std::string(trigger) +
                                    "\"\nstatus = 5\n" + keys);
    double number = 0;
    std::string failing;
    for (int call = 1; call <= 12; ++call) {
      EXPECT_EQ(PutVariable(controller.Target(), "Kernel.1.Logger.TriggerTask", "A", 2), 0u);
      EXPECT_EQ(GetVariable(controller.Target(), "Target.Mpu.Resolution", &number, 0), 0u);
      if (PutVariable(controller.Target(), trigger, "A", 2) == 5) failing += std::to_string(call) + ' ';
    }
    return failing;
  };
  EXPECT_EQ(failingCalls("from = 11"), "11 12 ");
  EXPECT_EQ(failingCalls("every = 3"), "1 4 7 10 ");
  EXPECT_EQ(failingCalls("from = 3\nevery = 4\ncount = 2"), "3 7 ");
}

TEST(Targets, OfOneFileAreOneControllerOnceItIsInOrder) {
  const TestController broken("[[fault]]\n");
  double value = 0;
  const std::string kernel = broken.Kernel(1);
  EXPECT_EQ(GetVariable(kernel.c_str(), "Target.Mpu.Resolution", &value, 0), sim::badScenario);
  EXPECT_EQ(sim::TextOf(sim::badScenario).substr(0, kernel.size() - 2), std::string(broken.Target()) + ":");
  std::ofstream(broken.Target()) << "[scheduler]\nslots = 2\n";
  const std::string target = broken.Target();
  const std::filesystem::path path(target);
  const std::string roundabout = path.parent_path() / "." / path.filename();
  EXPECT_EQ(sim::Connect(target).controller, sim::Connect(roundabout + "\\@10").controller);
  EXPECT_EQ(sim::Connect(target + "\\@10").kernel, 10u);
  EXPECT_FALSE(sim::Connect(target + "/@").kernel.has_value());
}

TEST(ErrorDescription, PrefersWhatHappenedOnTheSameThread) {
  double value = 0;
  GetVariable("first", "X", &value, 0);
  std::thread([&value] {
    GetVariable("second", "X", &value, 0);
    EXPECT_EQ(sim::TextOf(sim::unknownTarget).substr(0, 27), "There is no target 'second'");
  }).join();
  EXPECT_EQ(sim::TextOf(sim::unknownTarget).substr(0, 26), "There is no target 'first'");
  std::thread([] {
    EXPECT_TRUE(sim::TextOf(sim::unknownTarget).starts_with("There is no target 'second'"));
  }).join();
  EXPECT_EQ(sim::TextOf(0x12345), "Unknown status 0x00012345");
  for (uint32_t status = 0x51001; status <= 0x5100F; ++status)
    EXPECT_EQ(sim::GeneralTextOf(status).starts_with("Unknown"), status == 0x5100D) << status;
}

}  // namespace
