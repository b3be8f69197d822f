// Simulated machines whose faults are known: each file states behind "#> " what is to be found, the late task
// and the causes from the direct one to the root. None of these is built in.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "analysis/findings.h"
#include "analysis/usual.h"

using namespace analysis;

namespace {

std::string NameOfTask(const Lane& lane, TaskIndex task) {
  return task == noTask ? "-" : lane.Tasks()[task].name;
}

std::multiset<std::string> TruthOf(const std::filesystem::path& machine) {
  std::multiset<std::string> lines;
  std::ifstream file(machine);
  for (std::string line; std::getline(file, line);)
    if (line.rfind("#> ", 0) == 0) lines.insert(line.substr(3));
  return lines;
}

std::multiset<std::string> FoundIn(const Lane& lane) {
  const Conventions conventions{Meanings::OfSimulator(), FindIdleTask(lane)};
  const Schedule schedule(lane, conventions);
  std::multiset<std::string> lines;
  for (const Finding& finding : Explain(schedule, {}).findings) {
    std::string line = NameOfTask(lane, finding.task) + ":";
    for (const Link& link : finding.cause.chain)
      line += (line.back() == ':' ? " " : ", ") + std::string(NameOf(link.kind)) + ' ' +
              NameOfTask(lane, link.task);
    lines.insert(line);
  }
  return lines;
}

class Machine : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(Machine, IsExplainedByWhatIsWrongWithIt) {
  tasklog::Log log;
  ASSERT_TRUE(tasklog::StartLog(GetParam()));
  ASSERT_TRUE(log.AppendFromTarget(GetParam(), tasklog::schedulerLogger));
  EXPECT_EQ(FoundIn(Lane({&log})), TruthOf(GetParam()));
}

std::vector<std::filesystem::path> Machines() {
  std::vector<std::filesystem::path> machines;
  for (const auto& item : std::filesystem::directory_iterator(ANALYSIS_MACHINES))
    machines.push_back(item.path());
  return machines;
}

INSTANTIATE_TEST_SUITE_P(All, Machine, testing::ValuesIn(Machines()),
                         [](const auto& machine) { return machine.param.stem().string(); });

// The late jobs are cut out of the log: then nothing is left to conclude.
TEST(Explanation, ConcludesNothingAcrossAGap) {
  const std::filesystem::path machine = std::filesystem::path(ANALYSIS_MACHINES) / "first_jobs.toml";
  tasklog::Log log;
  ASSERT_TRUE(tasklog::StartLog(machine));
  ASSERT_TRUE(log.AppendFromTarget(machine, tasklog::schedulerLogger));
  const Lane whole({&log});
  const Schedule schedule(whole, {Meanings::OfSimulator(), FindIdleTask(whole)});
  const Explanation explanation = Explain(schedule, {});
  ASSERT_EQ(explanation.findings.size(), 1u);
  std::vector<Gap> gaps;
  for (const Occurrence& job : explanation.findings[0].occurrences)
    gaps.push_back({job.activation + 5000, job.completion + 5000});
  EXPECT_EQ(FoundIn(Lane({&log}, gaps)), std::multiset<std::string>{"-: lost-records -"});
}

struct Case {
  const char* name;
  std::vector<std::uint64_t> tail;  // behind 90 values from 100 to 120
  std::size_t outliers;
};

TEST(Usual, TellsOutliersFromSpread) {
  const Case cases[] = {
      {"none", {}, 0},
      {"one far out", {200}, 1},
      {"one that is nearer than the others are wide", {138}, 0},
      {"a tail that thins out", {125, 130, 137, 146, 158}, 0},
      {"a second mode that is too frequent to be rare", std::vector<std::uint64_t>(30, 200), 0}};
  for (const Case& one : cases) {
    std::vector<std::uint64_t> values;
    for (std::uint64_t i = 0; i < 90; ++i) values.push_back(100 + i % 21);
    values.insert(values.end(), one.tail.begin(), one.tail.end());
    EXPECT_EQ(FindUsual(values, 0.2).outliers, one.outliers) << one.name;
  }
}

TEST(Usual, TakesEveryTenthValueForMeantAndFindsChanges) {
  std::vector<std::uint64_t> regular, changed;
  for (std::uint64_t i = 0; i < 200; ++i) {
    regular.push_back(i % 10 == 9 ? 500 : 100 + i % 5);
    changed.push_back((i < 140 ? 100 : 180) + i % 5);
  }
  EXPECT_FALSE(FindUsual(regular, 0.2).IsHigh(500));
  EXPECT_FALSE(FindUsual(regular, 0.2).changedAt);
  EXPECT_EQ(FindUsual(changed, 0.2).changedAt, 140u);
}

}  // namespace
