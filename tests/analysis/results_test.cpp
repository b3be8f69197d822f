// Values, lanes, budgets and comparisons by themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "analysis/budget.h"
#include "analysis/comparison.h"
#include "analysis/histogram.h"
#include "analysis/pattern.h"
#include "analysis/walker.h"
#include "support/logs.h"

using namespace analysis;

namespace {

// By the definition: the smallest value that at least so many percent do not exceed.
std::uint64_t PlainPercentile(const std::vector<std::uint64_t>& sorted, std::uint64_t perMille) {
  for (std::size_t i = 0; i < sorted.size(); ++i)
    if ((i + 1) * 1000 >= perMille * sorted.size()) return sorted[i];
  return 0;
}

TEST(Values, GiveExactStatistics) {
  std::mt19937_64 random(1);
  const std::uint64_t spreads[] = {1, 3, 1000, 1u << 20, UINT64_MAX};
  for (unsigned round = 0; round < 200; ++round) {
    Values values;
    std::vector<std::uint64_t> plain;
    const std::uint64_t base = round % 3 == 0 ? 0 : UINT32_MAX - 500;
    for (std::uint64_t count = 1 + random() % (round < 150 ? 300 : 9000); count > 0; --count)
      plain.push_back(random() % 100 == 0 ? random() % 0xFFFFFFFFFFF : base + random() % spreads[round % 5]);
    for (std::size_t i = 0; i < plain.size(); ++i) values.Add(plain[i], i);
    const Summary summary = values.Summarize();
    const auto count = static_cast<long double>(plain.size());
    long double sum = 0, squares = 0;
    for (const std::uint64_t value : plain) sum += value;
    for (const std::uint64_t value : plain) squares += (value - sum / count) * (value - sum / count);
    EXPECT_EQ(summary.maxAt, std::max_element(plain.begin(), plain.end()) - plain.begin());
    EXPECT_EQ(summary.minAt, std::min_element(plain.begin(), plain.end()) - plain.begin());
    std::sort(plain.begin(), plain.end());
    std::vector<std::uint64_t> kept;
    values.ForEach([&](std::uint64_t value) { kept.push_back(value); });
    std::sort(kept.begin(), kept.end());
    EXPECT_EQ(kept, plain);
    EXPECT_EQ(summary.min, plain.front());
    EXPECT_EQ(summary.max, plain.back());
    EXPECT_NEAR(summary.mean, static_cast<double>(sum / count), 1e-12 * static_cast<double>(plain.back()));
    EXPECT_NEAR(summary.stddev, static_cast<double>(std::sqrt(squares / count)),
                1e-9 * static_cast<double>(plain.back()));
    EXPECT_EQ(summary.p50, PlainPercentile(plain, 500));
    EXPECT_EQ(summary.p95, PlainPercentile(plain, 950));
    EXPECT_EQ(summary.p99, PlainPercentile(plain, 990));
    EXPECT_EQ(summary.p999, PlainPercentile(plain, 999));
    EXPECT_EQ(values.Percentile(12.5), PlainPercentile(plain, 125));
    std::uint64_t inBins = 0;
    for (const Bin& bin : MakeHistogram(values, 20).bins) {
      EXPECT_LE(bin.from, bin.to);
      inBins += bin.count;
    }
    EXPECT_EQ(inBins, plain.size());
  }
}

TEST(Patterns, MatchWholeNames) {
  const struct {
    const char* pattern;
    const char* name;
    bool matches;
  } cases[] = {
      {"Axis", "Axis", true},
      {"Axis", "Axis1", false},
      {"", "", true},
      {"*", "", true},
      {"Axis?", "Axis1", true},
      {"Axis?", "Axis", false},
      {"*Loop", "PosLoop", true},
      {"a*b*c", "aXbYbc", true},
      {"a*b*c", "aXbY", false},
      {"[A-C]x", "Bx", true},
      {"[!A-C]x", "Bx", false},
      {"[]]", "]", true},
      {"[a", "[a", true},
      {"\\*", "*", true},
      {"\\*", "x", false},
      {"?", "", false},
  };
  for (const auto& c : cases)
    EXPECT_EQ(MatchesPattern(c.pattern, c.name), c.matches) << c.pattern << ' ' << c.name;
  EXPECT_TRUE(MatchesPattern(PatternOf("a*[b]\\?"), "a*[b]\\?"));
  EXPECT_FALSE(MatchesPattern(PatternOf("a*"), "ab"));
}

TEST(Texts, AreReadAsTheyAreWrittenOrRefused) {
  std::string mistake;
  EXPECT_EQ(Meanings::Parse("sim", mistake)->Text(), "0=preempted,1=done,3=fromIdle,4=waits,5=slice");
  for (const char* wrong : {"", "0", "2=done", "0=over", "0=done,0=done", "0=done,", "sim,0=done"})
    EXPECT_FALSE(Meanings::Parse(wrong, mistake)) << wrong;
  EXPECT_EQ(Selector::Parse("event:a:b", mistake)->Text(), "event:a:b");
  for (const char* wrong : {"", "event", "Event:a"}) EXPECT_FALSE(Selector::Parse(wrong, mistake)) << wrong;
}

// A log of Idle (1), Ctrl (2) and Comm (3).
void Fill(tasklog::Log& log, const std::vector<RingRecord>& records) {
  if (!records.empty()) {
    ASSERT_EQ(AppendRing(log.Handle(), RingWords(records[0].tick, records)), 0u);
  }
}

std::string Text(const std::vector<Gap>& gaps) {
  std::string text;
  for (const Gap& gap : gaps) text += std::to_string(gap.from) + '-' + std::to_string(gap.to) + ' ';
  return text;
}

TEST(Lanes, JoinSegmentsAndGaps) {
  tasklog::Log first, inner, last, empty;
  Fill(first, {{4, 100, 1}, {0, 200, 2}, {1, 300, 1}});
  Fill(inner, {{1, 150, 1}, {0, 200, 2}});
  Fill(last, {{4, 500, 1}, {0, 600, 3}});
  const Lane lane({&last, &empty, &first, &inner},
                  {{550, 700}, {10, 120}, {560, 570}, {300, 310}, {20, 100}});
  EXPECT_EQ(lane.StartTime(), 100u);
  EXPECT_EQ(lane.StopTime(), 600u);
  EXPECT_EQ(Text(lane.Gaps()), "100-120 300-500 550-600 ");
  EXPECT_EQ(lane.CoveredTicks(), 230u);
  EXPECT_EQ(Text(lane.Between(310, 555).Gaps()), "310-500 550-555 ");
  Statistics statistics(lane, 0);
  Walk(lane, {{}, 0}, {&statistics});
  EXPECT_EQ(statistics.Tasks()[1].loadTicks, 100u);
  EXPECT_EQ(statistics.UnknownTicks(), 80u);  // from the first gap to the switch at 200
}

TEST(Lanes, MayHoldNextToNothing) {
  const std::vector<RingRecord> cases[] = {{},
                                           {{6, 100, 0x9000}},
                                           {{6, 100, 0x9000}, {6, 200, 0x9000}},
                                           {{4, 100, 2}},
                                           {{4, 100, 2}, {6, 300, 0x9000}}};
  const Ticks known[] = {0, 0, 0, 0, 200};
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    tasklog::Log log;
    Fill(log, cases[i]);
    const Lane lane({&log});
    const TaskIndex idle = FindIdleTask(lane);
    Statistics statistics(lane, idle);
    Walk(lane, {Meanings::OfSimulator(), idle}, {&statistics});
    EXPECT_EQ(statistics.KnownTicks(), known[i]) << i;
    EXPECT_EQ(lane.Coverage(), 1) << i;
    EXPECT_EQ(statistics.Busy(), idle == noTask || known[i] == 0 ? std::nullopt : std::optional<double>(1))
        << i;
  }
}

// Ctrl answers in 20 and once in 50, every 100; OVRN twice.
void FillBudgeted(tasklog::Log& log) {
  std::vector<RingRecord> records{{4, 100, 1}};
  for (std::uint64_t cycle = 2; cycle < 30; ++cycle) {
    records.push_back({3, 100 * cycle, 2});
    records.push_back({6, 100 * cycle + 10, 0x9000});
    if (cycle == 7 || cycle == 9) records.push_back({7, 100 * cycle + 15, 0x4F56524E});
    records.push_back({1, 100 * cycle + (cycle == 7 ? 50 : 20), 1});
  }
  Fill(log, records);
}

Budget Limit(Budget::Measure measure, const char* pattern, double atMost) {
  Budget budget;
  budget.measure = measure;
  budget.pattern = pattern;
  budget.atMost = atMost;
  return budget;
}

TEST(Budgets, AreKeptOrBrokenByValueAndTime) {
  using Measure = Budget::Measure;
  tasklog::Log log;
  FillBudgeted(log);
  const Lane lane({&log});
  std::vector<Budget> budgets{Limit(Measure::quantity, "Ct*", 50),  Limit(Measure::quantity, "Ct*", 49),
                              Limit(Measure::quantity, "Ctrl", 20), Limit(Measure::load, "Ctrl", 0.1),
                              Limit(Measure::issues, "OVRN", 1),    Limit(Measure::issues, "NONE", 0),
                              Limit(Measure::coverage, "", 1),      Limit(Measure::latency, "", 39),
                              Limit(Measure::quantity, "Comm", 1),  Limit(Measure::quantity, "Nobody", 1),
                              Limit(Measure::testpoints, "No*", 1)};
  budgets[2].statistic = Statistic::p95;
  budgets[3].atLeast = 0.25;
  std::string mistake;
  budgets[7].begin = *Selector::Parse("testpoint:TP1", mistake);
  budgets[7].end = *Selector::Parse("completion:Ctrl", mistake);
  const Verdicts verdicts = Evaluate(lane, {Meanings::OfSimulator(), FindIdleTask(lane)}, budgets);
  std::string text;
  for (const Verdict& verdict : verdicts.all)
    text += std::to_string(verdict.budget) +
            (!verdict.isMeasured ? " none"
             : verdict.isKept    ? " kept"
                                 : " broken") +
            ' ' + std::to_string(std::lround(verdict.value * 100)) + " at " +
            std::to_string(verdict.at.value_or(0)) + '\n';
  EXPECT_EQ(text,
            "0 kept 5000 at 700\n1 broken 5000 at 700\n2 kept 2000 at 700\n3 broken 21 at 0\n"
            "4 broken 200 at 915\n5 kept 0 at 0\n6 kept 100 at 0\n7 broken 4000 at 710\n8 none 0 at 0\n");
  EXPECT_EQ(verdicts.unmatched, (std::vector<std::size_t>{9, 10}));
}

TEST(Budgets, SuggestedAreKeptByTheirExampleAndTellALargerOne) {
  tasklog::Log log;
  FillBudgeted(log);
  const Lane lane({&log});
  const Conventions conventions{Meanings::OfSimulator(), FindIdleTask(lane)};
  Statistics statistics(lane, conventions.idle);
  Walk(lane, conventions, {&statistics});
  const std::vector<Budget> budgets = Suggest({{&lane, &statistics}}, 0.2);
  ASSERT_EQ(budgets.size(), 5u);  // none on a start latency that is always 0
  EXPECT_EQ(budgets[2].name, "Ctrl response max");
  EXPECT_EQ(budgets[2].atMost, 90);  // 50, a fifth more, and that it lies 30 beyond the rest
  EXPECT_EQ(budgets[4].atLeast, 80);
  const Verdicts verdicts = Evaluate(lane, conventions, budgets);
  EXPECT_TRUE(
      std::all_of(verdicts.all.begin(), verdicts.all.end(), [](const Verdict& v) { return v.isKept; }));
}

// Values that follow each other are alike, as those of jobs are.
Values Series(unsigned seed, std::size_t count, std::uint64_t base, unsigned rareEvery,
              std::uint64_t rareBy) {
  std::mt19937 random(seed);
  Values values;
  std::uint64_t slow = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (i % 20 == 0) slow = random() % 50;
    const bool isRare = rareEvery > 0 && random() % rareEvery == 0;
    values.Add(base + slow + random() % 20 + (isRare ? rareBy : 0), i);
  }
  return values;
}

TEST(RankTests, TellAChangeFromNoise) {
  const Values before = Series(0, 4000, 1000, 300, 40);
  int noise = 0;
  for (unsigned seed = 1; seed <= 100; ++seed)
    noise += CompareRanks({&before}, {&(const Values&)Series(seed, 3000, 1000, 300, 40)}).IsNoise();
  EXPECT_EQ(noise, 100);
  const Values slower = Series(1, 3000, 1020, 300, 40);
  const Values late = Series(1, 3000, 1000, 30, 60);
  const Values once = Series(1, 3000, 1000, 2000, 900);
  EXPECT_GT(CompareRanks({&before}, {&slower}).superiority, 0.6);
  for (const Values* after : {&slower, &late, &once}) {
    EXPECT_FALSE(CompareRanks({&before}, {after}).IsNoise());
    EXPECT_FALSE(CompareRanks({after}, {&before, &before}).IsNoise());
  }
}

}  // namespace
