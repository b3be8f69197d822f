// Target names, and the texts of what is wrong with them.
#include "targets.h"

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

#include "scenariofile.h"
#include "status.h"
#include "target/access.h"

namespace {

using simtest::ScenarioFile;

std::string Describe(uint32_t status) {
  uint32_t size = 0;
  GetErrorDescription("", status, reinterpret_cast<char*>(&size), 0);
  std::string text(size, 'x');
  GetErrorDescription("", status, text.data(), size);
  EXPECT_EQ(text.back(), '\0');
  text.pop_back();
  return text;
}

uint32_t Probe(const std::string& target) {
  double value = 0;
  return GetVariable(target.c_str(), "Target.Mpu.Resolution", &value, 0);
}

TEST(Targets, MayCarryTheSuffixOfAKernel) {
  const auto plain = sim::Connect("demo");
  EXPECT_FALSE(plain.kernel.has_value());
  struct Case {
    const char* target;
    uint32_t kernel;
  };
  for (const Case& c : {Case{"demo/@1", 1}, Case{"demo\\@2", 2}, Case{"demo/@10", 10},
                        Case{"demo/@99999999999", UINT32_MAX}}) {
    const auto connection = sim::Connect(c.target);
    EXPECT_EQ(connection.controller, plain.controller) << c.target;
    EXPECT_EQ(connection.kernel, c.kernel) << c.target;
  }
  EXPECT_FALSE(sim::Connect("demo/@").kernel.has_value());
}

TEST(Targets, OfOneFileAreOneController) {
  const ScenarioFile scenario("[scheduler]\n");
  const std::string folder = testing::TempDir();
  const std::string name = std::string(scenario.Target()).substr(folder.size());
  EXPECT_EQ(sim::Connect(scenario.Target()).controller, sim::Connect(folder + "./" + name).controller);
}

TEST(Targets, ThatAreUnknownGetAListOfTheBuiltInOnes) {
  EXPECT_EQ(Probe("dmo/@1"), sim::unknownTarget);
  EXPECT_EQ(
      Describe(sim::unknownTarget),
      "There is no target 'dmo'; expected demo, overload, legacy, flaky, or the path of a scenario file, did "
      "you mean 'demo'?");
  EXPECT_EQ(Probe("nowhere/at/all.toml"), sim::unknownTarget);
  EXPECT_EQ(Probe(""), sim::unknownTarget);
  EXPECT_EQ(Probe("/@1"), sim::unknownTarget);
  EXPECT_EQ(Probe("@1"), sim::unknownTarget);
  EXPECT_EQ(Probe(testing::TempDir()), sim::badScenario);
  double value = 0;
  EXPECT_EQ(GetVariable(nullptr, "Target.Cpu", &value, 0), sim::badArgument);
}

TEST(Targets, WithAMistakeTellItAndMayBeRepaired) {
  const ScenarioFile scenario("[scheduler]\nslots = 0\n");
  EXPECT_EQ(Probe(scenario.Kernel(1)), sim::badScenario);
  EXPECT_EQ(Describe(sim::badScenario),
            std::string(scenario.Target()) + ":2: slots: expected an integer from 2 to 4000000");
  std::ofstream(scenario.Target()) << "[scheduler]\nslots = 2\n[timer]\nresolution_ns = 1\n";
  EXPECT_EQ(Probe(scenario.Kernel(1)), 0u);
}

TEST(ErrorDescription, IsCutToTheBufferAndTerminated) {
  char text[8] = "xxxxxxx";
  EXPECT_EQ(GetErrorDescription("", 0x40CA0020, text, 5), 0u);
  EXPECT_EQ(std::string(text, 8), std::string("The \0xx\0", 8));
  EXPECT_EQ(GetErrorDescription("", 0x40CA0020, text, 1), 0u);
  EXPECT_STREQ(text, "");
  EXPECT_EQ(Describe(0x12345), "Unknown status 0x00012345");
  EXPECT_EQ(Describe(0x40CA0020), "The logger did not start: its start procedure answered 0");
}

TEST(ErrorDescription, PrefersWhatHappenedOnTheSameThread) {
  Probe("first");
  std::thread([] {
    Probe("second");
    EXPECT_EQ(Describe(sim::unknownTarget).substr(0, 27), "There is no target 'second'");
  }).join();
  EXPECT_EQ(Describe(sim::unknownTarget).substr(0, 26), "There is no target 'first'");
  std::thread([] {
    EXPECT_EQ(Describe(sim::unknownTarget).substr(0, 27), "There is no target 'second'");
  }).join();
}

}  // namespace
