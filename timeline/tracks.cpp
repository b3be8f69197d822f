#include "tracks.h"

namespace timeline {

using analysis::noTask;

Tracks::Tracks(const analysis::Lane& lane, TaskIndex idle)
    : Visitor(wantsRuns | wantsJobs | wantsStates | wantsMarks | wantsMarkSubjects),
      lane_(&lane),
      idle_(idle),
      tasks_(lane.Tasks().size()),
      waitsSince_(lane.Tasks().size(), doesNotWait) {}

Tracks Tracks::Of(const analysis::Lane& lane, const analysis::Conventions& conventions) {
  Tracks tracks(lane, conventions.idle);
  analysis::Walk(lane, conventions, {&tracks});
  return tracks;
}

void Tracks::OnRun(const analysis::Run& run) {
  Spans& spans = run.task == noTask ? unknown_ : tasks_[run.task].runs;
  spans.Add(run.begin, run.end, run.cutBegin, run.cutEnd);
}

void Tracks::OnJob(const analysis::Job& job) {
  tasks_[job.task].jobs.Add(job.activation, job.end, job.cutBegin, job.cutEnd);
}

void Tracks::OnState(TaskIndex task, analysis::JobState state, Ticks time) {
  Ticks& since = waitsSince_[task];
  if (since != doesNotWait && since < time) tasks_[task].waits.Add(since, time);
  since = state == analysis::JobState::waiting ? time : doesNotWait;
}

void Tracks::OnMark(const analysis::Mark& mark) {
  const MarkPoint point{mark.time, mark.subject, mark.running};
  if (mark.type == TLLogTaskEvent) {
    if (mark.subject < tasks_.size()) tasks_[mark.subject].events.push_back(point);
  } else if (mark.type == TLLogTestpoint) {
    (mark.running == noTask ? loneTestpoints_ : tasks_[mark.running].testpoints).push_back(point);
  } else {
    issues_.push_back(point);
    if (mark.running != noTask) tasks_[mark.running].issues.push_back(point);
  }
}

}  // namespace timeline
