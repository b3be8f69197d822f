// Statistics and latencies of simulated machines whose true numbers follow from the scenario by hand: each
// scenario file states them behind "#> ".
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "analysis/latency.h"
#include "analysis/statistics.h"
#include "analysis/walker.h"

using namespace analysis;

namespace {

// "5: 8000", or with several values "10: min median max mean", the mean without fractions.
std::string SummaryText(const Summary& summary) {
  std::ostringstream text;
  text << summary.count << ": " << summary.min;
  if (summary.min != summary.max)
    text << ' ' << summary.p50 << ' ' << summary.max << ' ' << static_cast<std::uint64_t>(summary.mean);
  return text.str();
}

void AddTask(std::vector<std::string>& lines, const std::string& name, const TaskStatistics& task) {
  std::ostringstream text;
  text << name << " load " << task.loadTicks << " jobs " << task.jobs;
  const std::pair<const char*, std::uint64_t> counts[] = {{"cut", task.cut},
                                                          {"dropped", task.dropped},
                                                          {"preemptions", task.preemptions},
                                                          {"slices", task.slices},
                                                          {"waits", task.waits},
                                                          {"testpoints", task.testpoints},
                                                          {"issues", task.issues},
                                                          {"asked earlier", task.askedEarlier}};
  for (const auto& [word, count] : counts)
    if (count > 0) text << ' ' << word << ' ' << count;
  lines.push_back(text.str());
  for (std::size_t i = 0; i < quantityCount; ++i)
    if (const Summary summary = task.values[i].Summarize(); summary.count > 0)
      lines.push_back(name + ' ' + std::string(NameOf(static_cast<Quantity>(i))) + ' ' +
                      SummaryText(summary));
}

// Of a line "latency BEGIN END ..." as it should be.
std::string LatencyLine(const Lane& lane, const Conventions& conventions, const std::string& expected) {
  std::istringstream words(expected);
  std::string word, begin, end, mistake;
  words >> word >> begin >> end;
  Latencies latencies(lane, *Selector::Parse(begin, mistake), *Selector::Parse(end, mistake));
  Walk(lane, conventions, {&latencies});
  return word + ' ' + begin + ' ' + end + ' ' + SummaryText(latencies.Lengths().Summarize()) + " unmatched " +
         std::to_string(latencies.UnmatchedBegins());
}

std::vector<std::string> TruthOf(const std::filesystem::path& scenario) {
  std::vector<std::string> lines;
  std::ifstream file(scenario);
  for (std::string line; std::getline(file, line);)
    if (line.rfind("#> ", 0) == 0) lines.push_back(line.substr(3));
  return lines;
}

std::vector<std::string> Analyse(const tasklog::Log& log, const std::vector<std::string>& truth) {
  const Lane lane({&log});
  const Conventions conventions{Meanings::OfSimulator(), FindIdleTask(lane)};
  const Statistics statistics = Statistics::Of(lane, conventions);
  std::vector<std::string> lines{"lane " + std::to_string(lane.Length()) + " unknown " +
                                 std::to_string(statistics.UnknownTicks())};
  for (const char* name : {"H", "M", "A", "B", "W", "P", "L", "Q", "R", "Idle"})
    for (const TaskIndex task : lane.Names().TasksNamed(name)) AddTask(lines, name, statistics.Tasks()[task]);
  for (const std::string& line : truth)
    if (line.rfind("latency", 0) == 0) lines.push_back(LatencyLine(lane, conventions, line));
  return lines;
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + '\n';
  return text;
}

// A file does not tell which task passed a testpoint in the tick of a switch.
std::string WithoutMarks(const std::string& text) {
  return std::regex_replace(text, std::regex(" (testpoints|issues) [0-9]+"), "");
}

TEST(Scenarios, GiveTheNumbersThatFollowFromThem) {
  int count = 0;
  for (const auto& item : std::filesystem::directory_iterator(ANALYSIS_SCENARIOS)) {
    SCOPED_TRACE(item.path().filename());
    const std::vector<std::string> truth = TruthOf(item.path());
    tasklog::Log log;
    ASSERT_TRUE(tasklog::StartLog(item.path()));
    ASSERT_TRUE(log.AppendFromTarget(item.path(), tasklog::schedulerLogger));
    EXPECT_EQ(Joined(Analyse(log, truth)), Joined(truth));
    const std::string path = testing::TempDir() + "analysis-scenario.tasklog";
    tasklog::Log fromFile;
    ASSERT_TRUE(log.SaveAsFile(path));
    ASSERT_TRUE(fromFile.AppendFromFile(path));
    EXPECT_EQ(WithoutMarks(Joined(Analyse(fromFile, truth))), WithoutMarks(Joined(truth)));
    std::filesystem::remove(path);
    ++count;
  }
  EXPECT_GE(count, 6);
}

}  // namespace
