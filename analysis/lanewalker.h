// The walk itself, for one kind of sink: tick by tick, what the records of each say of who ran.
#pragma once

#include <array>

#include "jobs.h"
#include "tick.h"

namespace analysis {

// A sink is told what Visitor is told. It is a type of its own where the calls cost too much.
template <class Sink>
class LaneWalker {
 public:
  // All are borrowed.
  LaneWalker(const Lane& lane, const Conventions& conventions, Sink& sink)
      : lane_(lane),
        idle_(conventions.idle),
        taskCount_(static_cast<TaskIndex>(lane.Tasks().size())),
        sink_(sink),
        jobs_(lane, conventions.idle, sink),
        reader_(lane, sink.WantsMarkSubjects()),
        lookahead_(lane),
        places_(lane.Tasks().size()),
        nextGapBegin_(lane.Gaps().empty() ? UINT64_MAX : lane.Gaps()[0].from),
        isFirstTick_(lane.BeginsLog()),
        runBegin_(lane.StartTime()) {
    for (std::size_t type = 0; type < meanings_.size(); ++type)
      meanings_[type] = conventions.meanings.Of(static_cast<ETLLogType>(type));
    for (const Task& task : lane.Tasks()) priorities_.push_back(task.priority);
  }

  void Walk() {
    FindWhoRuns();
    while (reader_.Next(tick_)) {
      if (tick_.time > nextGapBegin_) PassGapsBefore(tick_.time);
      if (tick_.time >= lostUntil_) TakeTick();
      isFirstTick_ = false;
    }
    PassGapsBefore(UINT64_MAX);
    EndRun(lane_.StopTime(), true);
    jobs_.Cut(lane_.StopTime());
    sink_.OnEnd(lane_.StopTime());
  }

 private:
  // A task in slot 0 of a switch or an event of the tick at hand.
  struct Named {
    TaskIndex task;
    unsigned switches;
    bool isEvent;    // named by an event, or by two switches: then a file made one of them of an event
    bool completed;  // a job, within the tick
  };

  // The first switch tells who ran before it. Where its tick has several, that is the one to which none of
  // them switches.
  void FindWhoRuns() {
    const std::vector<SwitchSlots>& first = lookahead_.First();
    if (first.empty() || !lane_.KnowsWhoRan() || nextGapBegin_ < lookahead_.FirstTime()) return;
    running_ = TaskOf(first[0].running);
    const auto mark = [&](std::uint32_t place) {
      for (const SwitchSlots& one : first)
        if (TaskOf(one.subject) != noTask) places_[one.subject] = place;
    };
    mark(1);
    const auto found = std::find_if(first.begin(), first.end(), [&](const SwitchSlots& one) {
      return TaskOf(one.running) != noTask && places_[one.running] == 0;
    });
    if (found != first.end()) running_ = found->running;
    mark(0);
    jobs_.Enter(running_, Meaning::waits, lane_.StartTime());
  }

  void PassGapsBefore(Ticks time) {
    const std::vector<Gap>& gaps = lane_.Gaps();
    while (nextGap_ < gaps.size() && gaps[nextGap_].from < time) LoseRecords(gaps[nextGap_++]);
    nextGapBegin_ = nextGap_ < gaps.size() ? gaps[nextGap_].from : UINT64_MAX;
  }

  void LoseRecords(const Gap& gap) {
    EndRun(gap.from, true);
    jobs_.Cut(gap.from);
    sink_.OnGap(gap);
    running_ = noTask;
    lostUntil_ = runBegin_ = gap.to;
    runIsCut_ = true;
  }

  void TakeTick() {
    if (tick_.switches == 1) return TakeOneSwitch();
    if (tick_.switches > 1) return TakeCrowd();
    const bool begins = !IsFirstRecord();
    for (const Record& record : tick_) {
      if (sink_.WantsMarks()) sink_.OnMark({record.type, record.subject, running_, tick_.time});
      if (record.type == TLLogTaskEvent) jobs_.Event(TaskOf(record.subject), tick_.time, running_, begins);
    }
  }

  void TakeOneSwitch() {
    const Record* record = tick_.begin();
    while (!IsSwitch(record->type)) ++record;
    const TaskIndex before = running_;
    const TaskIndex to = TaskOf(record->subject);
    const bool isNewRun = to != before;
    const bool leaves = isNewRun || BeganAnew();
    const Meaning meaning = isNewRun ? MeaningOf(record->type, to) : Meaning::done;
    if (tick_.HasMarks()) TellMarks(true, before);
    if (isNewRun) EndRun(tick_.time, false);
    if (leaves) jobs_.Leave(before, meaning, tick_.time);
    if (tick_.events > 0) TakeEvents(before);
    if (isNewRun) BeginRun(to);
    if (leaves) jobs_.Enter(to, meaning, tick_.time, !IsFirstRecord());
    if (tick_.HasMarks()) TellMarks(false, before);
  }

  void TakeEvents(TaskIndex before) {
    for (const Record& record : tick_) {
      if (record.type != TLLogTaskEvent) continue;
      TellEvent(record.subject, before);
      jobs_.Event(TaskOf(record.subject), tick_.time, before);
    }
  }

  // ---- Several switches ----

  // The order of the records says nothing: a file gives them back in that of its sections.
  void TakeCrowd() {
    NameTasks();
    const TaskIndex before = running_;
    const TaskIndex behind = WhoRunsBehind();
    const bool isNewRun = behind != before;
    const bool leaves = isNewRun || BeganAnew();
    const Meaning meaning = isNewRun ? MeaningOf(TypeOfLeaving(behind), behind) : Meaning::done;
    TellMarks(true, before);
    if (isNewRun) EndRun(tick_.time, false);
    if (leaves) jobs_.Leave(before, meaning, tick_.time);
    FindCompleted(before, behind);
    for (const Named& named : named_) TakeNamed(named, before, behind);
    if (isNewRun) BeginRun(behind);
    if (leaves) jobs_.Enter(behind, meaning, tick_.time);
    TellMarks(false, before);
  }

  void NameTasks() {
    named_.clear();
    for (const Record& record : tick_) {
      const bool isEvent = record.type == TLLogTaskEvent;
      const TaskIndex task = TaskOf(record.subject);
      if (task == noTask || !(isEvent || IsSwitch(record.type))) continue;
      if (places_[task] == 0) {
        named_.push_back({task, 0, false, false});
        places_[task] = static_cast<std::uint32_t>(named_.size());
      }
      Named& named = named_[places_[task] - 1];
      named.isEvent |= isEvent || ++named.switches > 1;
    }
  }

  // Of those named and the one before, the next later switches tell who ran until then; of several it is the
  // one of highest priority. Without a later switch the one before counts only if it is named.
  TaskIndex WhoRunsBehind() {
    if (named_.size() == 1) return named_[0].task;
    TaskIndex found = noTask;
    const auto consider = [&](TaskIndex task) {
      if (found == noTask || priorities_[task] > priorities_[found]) found = task;
    };
    for (const SwitchSlots& next : lookahead_.Behind(tick_.time)) {
      const TaskIndex task = TaskOf(next.running);
      if (task != noTask && (task == running_ || places_[task] != 0)) consider(task);
    }
    if (found != noTask) return found;
    for (const Named& named : named_) consider(named.task);
    return found;
  }

  // What the entry says with which the task before left; 3 and 4 are also what a file says that does not
  // know.
  ETLLogType TypeOfLeaving(TaskIndex behind) const {
    ETLLogType type = running_ != noTask && running_ == idle_ ? TLLogSwitch3 : TLLogSwitch4;
    for (const Record& record : tick_) {
      if (!IsSwitch(record.type)) continue;
      if (running_ == noTask ? record.subject == behind
                             : record.type != TLLogSwitch3 && record.type != TLLogSwitch4 &&
                                   reader_.MayHaveRun(running_, record))
        type = record.type;
    }
    return type;
  }

  // A task that was switched to and left by `done` within the tick had little left to do.
  void FindCompleted(TaskIndex before, TaskIndex behind) {
    for (const Record& record : tick_) {
      if (!IsSwitch(record.type)) continue;
      const TaskIndex task = TaskOf(reader_.RunningAt(record));
      if (task == noTask || task == before || places_[task] == 0) continue;
      const Meaning meaning = meanings_[static_cast<std::size_t>(record.type)];
      const bool isOutranked = behind != noTask && priorities_[behind] > priorities_[task];
      if (meaning == Meaning::done || (meaning == Meaning::plain && !isOutranked))
        named_[places_[task] - 1].completed = true;
    }
  }

  void TakeNamed(const Named& named, TaskIndex before, TaskIndex behind) {
    places_[named.task] = 0;
    if (named.isEvent) TellEvent(named.task, before);
    const bool becameReady = named.task != behind && !named.completed;
    if (named.isEvent || becameReady) jobs_.Event(named.task, tick_.time, before);
    if (named.completed) jobs_.Complete(named.task, tick_.time);
  }

  // ---- What a switch does ----

  // A plain switch to a task of higher priority is taken for a preemption, any other for the end of a job.
  Meaning MeaningOf(ETLLogType type, TaskIndex to) const {
    const Meaning meaning = meanings_[static_cast<std::size_t>(type)];
    const bool isContradicted = meaning == Meaning::fromIdle && running_ != noTask && running_ != idle_;
    if (meaning != Meaning::plain && !isContradicted) return meaning;
    if (running_ == noTask || to == noTask) return Meaning::done;
    return priorities_[to] > priorities_[running_] ? Meaning::preempted : Meaning::done;
  }

  // Whether the task that runs before and behind this tick ended a job in it. Where types tell nothing, it
  // did if the idle task had the processor meanwhile.
  bool BeganAnew() const {
    if (running_ == noTask || running_ == idle_) return false;
    for (const Record& record : tick_) {
      if (!IsSwitch(record.type)) continue;
      const Meaning meaning = meanings_[static_cast<std::size_t>(record.type)];
      if (meaning == Meaning::done && reader_.MayHaveRun(running_, record)) return true;
      if (meaning == Meaning::plain && record.subject == idle_) return true;
    }
    return false;
  }

  void BeginRun(TaskIndex task) {
    running_ = task;
    runBegin_ = tick_.time;
    runIsCut_ = tick_.time == lane_.StartTime();
  }

  void EndRun(Ticks time, bool isCut) {
    if (time != runBegin_) sink_.OnRun({running_, runBegin_, time, runIsCut_, isCut});
  }

  // Those that the task before passed or raised, or the others.
  void TellMarks(bool ofBefore, TaskIndex before) {
    if (!sink_.WantsMarks() || !tick_.HasMarks()) return;
    for (const Record& record : tick_) {
      if (IsSwitch(record.type) || record.type == TLLogTaskEvent) continue;
      const bool isOfBefore = before != noTask && reader_.MayHaveRun(before, record);
      if (isOfBefore == ofBefore) sink_.OnMark({record.type, record.subject, running_, tick_.time});
    }
  }

  void TellEvent(SubjectIndex task, TaskIndex running) {
    if (sink_.WantsMarks()) sink_.OnMark({TLLogTaskEvent, task, running, tick_.time});
  }

  TaskIndex TaskOf(SubjectIndex subject) const { return subject < taskCount_ ? subject : noTask; }
  bool IsFirstRecord() const { return isFirstTick_ && tick_.Size() == 1; }

  const Lane& lane_;
  std::array<Meaning, 8> meanings_ = {};
  TaskIndex idle_;
  TaskIndex taskCount_;
  std::vector<std::uint32_t> priorities_;  // by TaskIndex
  Sink& sink_;
  Jobs<Sink> jobs_;
  TickReader reader_;
  Lookahead lookahead_;
  Tick tick_;
  std::vector<Named> named_;
  std::vector<std::uint32_t> places_;  // by TaskIndex: 1 + its place in `named_`
  std::size_t nextGap_ = 0;
  Ticks nextGapBegin_;
  Ticks lostUntil_ = 0;
  bool isFirstTick_;

  TaskIndex running_ = noTask;
  Ticks runBegin_;
  bool runIsCut_ = true;
};

}  // namespace analysis
