// What a picture keeps of a lane, against the walk over it.
#include <gtest/gtest.h>

#include "tests/analysis/randomschedule.h"
#include "timeline/hittest.h"
#include "timeline/selection.h"

using namespace timeline;
using analysis::noTask;

namespace {

class Recorded : public analysis::Visitor {
 public:
  Recorded() : Visitor(wantsRuns | wantsJobs | wantsMarks) {}
  void OnRun(const analysis::Run& run) override { runs.push_back(run); }
  void OnJob(const analysis::Job& job) override { jobs.push_back(job); }
  void OnMark(const analysis::Mark& mark) override { marks.push_back(mark); }

  std::vector<analysis::Run> runs;
  std::vector<analysis::Job> jobs;
  std::vector<analysis::Mark> marks;
};

struct Walked {
  explicit Walked(unsigned seed) : random(seed) {
    Load(log, random);
    lane = analysis::Lane({&log}, random.Gaps(log, random.Below(3)));
    conventions = {analysis::Meanings::OfSimulator(), analysis::FindIdleTask(lane)};
    analysis::Walk(lane, conventions, {&recorded});
  }

  RandomSchedule random;
  tasklog::Log log;
  analysis::Lane lane{{}};
  analysis::Conventions conventions;
  Recorded recorded;
};

TEST(Tracks, HoldEachRunAndJobWithItsCuts) {
  for (unsigned seed = 1; seed <= 500 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    const Walked walked(seed);
    const Tracks tracks = Tracks::Of(walked.lane, walked.conventions);
    std::vector<std::size_t> runs(tracks.Tasks().size() + 1), jobs(runs.size());
    for (const analysis::Run& run : walked.recorded.runs) {
      const Spans& spans = run.task == noTask ? tracks.Unknown() : tracks.Tasks()[run.task].runs;
      const std::size_t i = runs[run.task == noTask ? runs.size() - 1 : run.task]++;
      EXPECT_EQ(spans.BeginOf(i), run.begin);
      EXPECT_EQ(spans.EndOf(i), run.end);
      EXPECT_EQ(spans.IsCutAtBegin(i), run.cutBegin);
      EXPECT_EQ(spans.IsCutAtEnd(i), run.cutEnd);
    }
    for (const analysis::Job& job : walked.recorded.jobs) {
      const TaskTrack& track = tracks.Tasks()[job.task];
      const std::size_t i = jobs[job.task]++;
      EXPECT_EQ(track.jobs.BeginOf(i), job.activation);
      EXPECT_EQ(track.jobs.EndOf(i), job.end);
      EXPECT_EQ(track.jobs.IsCutAtBegin(i), job.cutBegin);
      EXPECT_EQ(track.runs.TicksWithin(job.activation, job.end), job.execution);
      EXPECT_EQ(track.waits.TicksWithin(job.activation, job.end), job.waiting);
    }
    std::size_t marks = tracks.Issues().size() + tracks.LoneTestpoints().size();
    for (const TaskTrack& track : tracks.Tasks()) marks += track.events.size() + track.testpoints.size();
    EXPECT_EQ(marks, walked.recorded.marks.size());
  }
}

// A pixel a tick: under each lies what the walk tells of that tick.
TEST(Hits, FindWhoRanAndWhatWasAsked) {
  for (unsigned seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    const Walked walked(seed);
    const Tracks tracks = Tracks::Of(walked.lane, walked.conventions);
    const auto length = static_cast<std::uint32_t>(walked.lane.Length());
    if (length == 0) continue;
    const Window window(walked.lane.StartTime(), length, length);
    const std::vector<PlacedRow> rows = Place(0, RowsOf(tracks, {}, window.From(), window.To()), 0);
    for (const analysis::Run& run : walked.recorded.runs) {
      const auto x = static_cast<double>(run.begin - window.From()) + 0.5;
      const Hit hit = HitAt(tracks, rows[0], window, x, runsTop + 1);
      EXPECT_EQ(hit.kind, run.task == noTask ? HitKind::unknown : HitKind::run);
      EXPECT_EQ(hit.task, run.task);
      EXPECT_EQ(hit.begin, run.begin);
    }
    for (const PlacedRow& row : rows) {
      for (const analysis::Job& job : walked.recorded.jobs) {
        if (job.task != row.task || job.activation == job.end) continue;
        const auto x = static_cast<double>(job.activation - window.From()) + 0.5;
        const Hit hit = HitAt(tracks, row, window, x, runsTop + taskRunsHeight + 1);
        EXPECT_EQ(hit.kind, HitKind::job);
        EXPECT_EQ(hit.end, job.end);
      }
    }
  }
}

// Four tasks: `rows` names them in order, by the first letter.
std::string Letters(const Tracks& tracks, const RowChoice& choice, Ticks from, Ticks to) {
  std::string letters;
  for (const TaskIndex task : RowsOf(tracks, choice, from, to))
    letters += tracks.Lane().Tasks()[task].name[0];
  return letters;
}

TEST(Rows, AreSortedAndChosen) {
  tasklog::Log log;
  ASSERT_EQ(AppendBytes(log.Handle(), TaskFile({.startTime = 0, .stopTime = 1000},
                                               {{"Alone", 9, 0, {{2, 0, 900}}},
                                                {"Busy", 5, 0, {{2, 1, 100}, {2, 3, 500}}},
                                                {"Calm", 7, 0, {{2, 2, 300}}},
                                                {"Doze", 1, 0, {{2, 0, 0}}}})),
            0u);
  const analysis::Lane lane({&log});
  const Tracks tracks = Tracks::Of(lane, {});
  EXPECT_EQ(Letters(tracks, {}, 0, 1000), "ACBD");
  EXPECT_EQ(Letters(tracks, {.order = RowOrder::load}, 0, 1000), "BCAD");
  EXPECT_EQ(Letters(tracks, {.order = RowOrder::firstRun}, 0, 1000), "DBCA");
  EXPECT_EQ(Letters(tracks, {.order = RowOrder::name, .patterns = {"*l*", "D*"}}, 0, 1000), "ACD");
  EXPECT_EQ(Letters(tracks, {}, 320, 480), "CBD");
  EXPECT_EQ(Letters(tracks, {.hidesEmpty = false}, 320, 480), "ACBD");
}

}  // namespace
