#include "walker.h"

#include <algorithm>

#include "jobs.h"
#include "tick.h"

namespace analysis {
namespace {

class LaneWalker {
 public:
  LaneWalker(const Lane& lane, const Conventions& conventions, const std::vector<Visitor*>& visitors);
  void Walk();

 private:
  // A task in slot 0 of a switch or an event of the tick at hand.
  struct Named {
    TaskIndex task;
    unsigned switches;
    bool isEvent;  // named by an event, or by two switches: then a file made one of them of an event
  };

  void FindWhoRuns();
  void PassGapsBefore(Ticks time);
  void LoseRecords(const Gap& gap);
  void TakeTick();

  const Record& TheSwitch() const;
  void TakeOneSwitch();
  void TakeCrowd();
  void NameTasks();
  TaskIndex WhoRunsBehind();
  ETLLogType TypeOfLeaving(TaskIndex behind) const;
  void TakeNamed(const Named& named, TaskIndex before, TaskIndex behind);

  Meaning MeaningOf(ETLLogType type, TaskIndex to) const;
  bool BeganAnew() const;
  void BeginRun(TaskIndex task);
  void EndRun(Ticks time, bool isCut);
  void TellMarks(bool ofBefore, TaskIndex before);
  void TellMark(ETLLogType type, SubjectIndex subject, TaskIndex running);
  TaskIndex TaskOf(SubjectIndex subject) const { return lane_.Names().IsTask(subject) ? subject : noTask; }
  std::uint32_t PriorityOf(TaskIndex task) const { return lane_.Tasks()[task].priority; }
  bool IsFirstRecord() const { return isFirstTick_ && tick_.Size() == 1; }

  const Lane& lane_;
  const Conventions& conventions_;
  Listeners listeners_;
  Jobs jobs_;
  TickReader reader_;
  Lookahead lookahead_;
  Tick tick_;
  std::vector<Named> named_;
  std::vector<std::uint32_t> places_;  // by TaskIndex: 1 + its place in `named_`
  std::size_t nextGap_ = 0;
  Ticks nextGapBegin_ = 0;
  Ticks lostUntil_ = 0;
  bool isFirstTick_;

  TaskIndex running_ = noTask;
  Ticks runBegin_;
  bool runIsCut_ = true;
};

LaneWalker::LaneWalker(const Lane& lane, const Conventions& conventions,
                       const std::vector<Visitor*>& visitors)
    : lane_(lane),
      conventions_(conventions),
      listeners_(visitors),
      jobs_(lane, conventions.idle, listeners_),
      reader_(lane, listeners_.wantMarkSubjects),
      lookahead_(lane),
      places_(lane.Tasks().size()),
      isFirstTick_(lane.BeginsLog()),
      runBegin_(lane.StartTime()) {}

void LaneWalker::Walk() {
  FindWhoRuns();
  while (reader_.Next(tick_)) {
    if (tick_.time > nextGapBegin_) PassGapsBefore(tick_.time);
    if (tick_.time >= lostUntil_) TakeTick();
    isFirstTick_ = false;
  }
  PassGapsBefore(UINT64_MAX);
  EndRun(lane_.StopTime(), true);
  jobs_.Cut(lane_.StopTime());
  for (Visitor* visitor : listeners_.all) visitor->OnEnd(lane_.StopTime());
}

// The first switch tells who ran before it. Where its tick has several, that is the one to which none of them
// switches.
void LaneWalker::FindWhoRuns() {
  const std::vector<SwitchSlots>& first = lookahead_.First();
  if (first.empty() || !lane_.KnowsWhoRan()) return;
  if (!lane_.Gaps().empty() && lane_.Gaps()[0].from < lookahead_.FirstTime()) return;
  running_ = TaskOf(first[0].running);
  for (const SwitchSlots& one : first) {
    const auto isTo = [&one](const SwitchSlots& other) { return other.subject == one.running; };
    if (TaskOf(one.running) == noTask || std::any_of(first.begin(), first.end(), isTo)) continue;
    running_ = one.running;
    break;
  }
  jobs_.Enter(running_, Meaning::waits, lane_.StartTime());
}

void LaneWalker::PassGapsBefore(Ticks time) {
  const std::vector<Gap>& gaps = lane_.Gaps();
  while (nextGap_ < gaps.size() && gaps[nextGap_].from < time) LoseRecords(gaps[nextGap_++]);
  nextGapBegin_ = nextGap_ < gaps.size() ? gaps[nextGap_].from : UINT64_MAX;
}

void LaneWalker::LoseRecords(const Gap& gap) {
  EndRun(gap.from, true);
  jobs_.Cut(gap.from);
  for (Visitor* visitor : listeners_.all) visitor->OnGap(gap);
  running_ = noTask;
  lostUntil_ = runBegin_ = gap.to;
  runIsCut_ = true;
}

void LaneWalker::TakeTick() {
  if (tick_.switches == 1 && tick_.events == 0) return TakeOneSwitch();
  if (tick_.switches > 0) return TakeCrowd();
  for (const Record& record : tick_) {
    TellMark(record.type, record.subject, running_);
    if (record.type == TLLogTaskEvent)
      jobs_.Event(TaskOf(record.subject), tick_.time, running_, !IsFirstRecord());
  }
}

// The first, where there are several.
const Record& LaneWalker::TheSwitch() const {
  return *std::find_if(tick_.begin(), tick_.end(),
                       [](const Record& record) { return IsSwitch(record.type); });
}

void LaneWalker::TakeOneSwitch() {
  const Record& record = TheSwitch();
  const TaskIndex before = running_;
  const TaskIndex to = TaskOf(record.subject);
  const bool isNewRun = to != before;
  TellMarks(true, before);
  if (isNewRun || BeganAnew()) {
    const Meaning meaning = isNewRun ? MeaningOf(record.type, to) : Meaning::done;
    if (isNewRun) EndRun(tick_.time, false);
    jobs_.Leave(before, meaning, tick_.time);
    if (isNewRun) BeginRun(to);
    jobs_.Enter(to, meaning, tick_.time, !IsFirstRecord());
  }
  TellMarks(false, before);
}

// ---- A switch together with other switches or events ----

// The order of the records says nothing: a file gives them back in that of its sections.
void LaneWalker::TakeCrowd() {
  NameTasks();
  const TaskIndex before = running_;
  const TaskIndex behind = WhoRunsBehind();
  const bool isNewRun = behind != before;
  const bool leaves = isNewRun || BeganAnew();
  const Meaning meaning = isNewRun ? MeaningOf(TypeOfLeaving(behind), behind) : Meaning::done;
  TellMarks(true, before);
  if (isNewRun) EndRun(tick_.time, false);
  if (leaves) jobs_.Leave(before, meaning, tick_.time);
  for (const Named& named : named_) TakeNamed(named, before, behind);
  if (isNewRun) BeginRun(behind);
  if (leaves) jobs_.Enter(behind, meaning, tick_.time);
  TellMarks(false, before);
}

void LaneWalker::NameTasks() {
  named_.clear();
  for (const Record& record : tick_) {
    const bool isEvent = record.type == TLLogTaskEvent;
    const TaskIndex task = TaskOf(record.subject);
    if (task == noTask || !(isEvent || IsSwitch(record.type))) continue;
    if (places_[task] == 0) {
      named_.push_back({task, 0, false});
      places_[task] = static_cast<std::uint32_t>(named_.size());
    }
    Named& named = named_[places_[task] - 1];
    named.isEvent |= isEvent || ++named.switches > 1;
  }
}

// A single switch tells it. With several, of those named and the one before, the next later switches tell who
// ran until then; of several it is the one of highest priority. Without a later switch the one before counts
// only if it is named.
TaskIndex LaneWalker::WhoRunsBehind() {
  if (tick_.switches == 1) return TaskOf(TheSwitch().subject);
  if (named_.size() == 1) return named_[0].task;
  TaskIndex found = noTask;
  const auto consider = [&](TaskIndex task) {
    if (found == noTask || PriorityOf(task) > PriorityOf(found)) found = task;
  };
  for (const SwitchSlots& next : lookahead_.Behind(tick_.time)) {
    const TaskIndex task = TaskOf(next.running);
    if (task != noTask && (task == running_ || places_[task] != 0)) consider(task);
  }
  if (found != noTask) return found;
  for (const Named& named : named_) consider(named.task);
  return found;
}

// What the entry says with which the task before left; 3 and 4 are also what a file says that does not know.
ETLLogType LaneWalker::TypeOfLeaving(TaskIndex behind) const {
  ETLLogType type = running_ != noTask && running_ == conventions_.idle ? TLLogSwitch3 : TLLogSwitch4;
  for (const Record& record : tick_) {
    if (!IsSwitch(record.type)) continue;
    if (running_ == noTask ? record.subject == behind
                           : record.type != TLLogSwitch3 && record.type != TLLogSwitch4 &&
                                 reader_.MayHaveRun(running_, record))
      type = record.type;
  }
  return type;
}

void LaneWalker::TakeNamed(const Named& named, TaskIndex before, TaskIndex behind) {
  places_[named.task] = 0;
  if (named.isEvent) TellMark(TLLogTaskEvent, named.task, before);
  if (named.isEvent || named.task != behind) jobs_.Event(named.task, tick_.time, before);
}

// ---- What a switch does ----

// A plain switch to a task of higher priority is taken for a preemption, any other for the end of a job.
Meaning LaneWalker::MeaningOf(ETLLogType type, TaskIndex to) const {
  const Meaning meaning = conventions_.meanings.Of(type);
  const bool isContradicted =
      meaning == Meaning::fromIdle && running_ != noTask && running_ != conventions_.idle;
  if (meaning != Meaning::plain && !isContradicted) return meaning;
  if (running_ == noTask || to == noTask) return Meaning::done;
  return PriorityOf(to) > PriorityOf(running_) ? Meaning::preempted : Meaning::done;
}

// Whether the task that runs before and behind this tick ended a job in it. Where types tell nothing, it did
// if the idle task had the processor meanwhile.
bool LaneWalker::BeganAnew() const {
  if (running_ == noTask || running_ == conventions_.idle) return false;
  for (const Record& record : tick_) {
    if (!IsSwitch(record.type)) continue;
    const Meaning meaning = conventions_.meanings.Of(record.type);
    if (meaning == Meaning::done && reader_.MayHaveRun(running_, record)) return true;
    if (meaning == Meaning::plain && record.subject == conventions_.idle) return true;
  }
  return false;
}

void LaneWalker::BeginRun(TaskIndex task) {
  running_ = task;
  runBegin_ = tick_.time;
  runIsCut_ = tick_.time == lane_.StartTime();
}

void LaneWalker::EndRun(Ticks time, bool isCut) {
  if (time == runBegin_) return;
  const Run run{running_, runBegin_, time, runIsCut_, isCut};
  for (Visitor* visitor : listeners_.runs) visitor->OnRun(run);
}

// Those that the task before passed or raised, or the others.
void LaneWalker::TellMarks(bool ofBefore, TaskIndex before) {
  if (listeners_.marks.empty() || !tick_.HasMarks()) return;
  for (const Record& record : tick_) {
    if (IsSwitch(record.type) || record.type == TLLogTaskEvent) continue;
    const bool isOfBefore = before != noTask && reader_.MayHaveRun(before, record);
    if (isOfBefore == ofBefore) TellMark(record.type, record.subject, running_);
  }
}

void LaneWalker::TellMark(ETLLogType type, SubjectIndex subject, TaskIndex running) {
  for (Visitor* visitor : listeners_.marks) visitor->OnMark({type, subject, running, tick_.time});
}

}  // namespace

void Walk(const Lane& lane, const Conventions& conventions, const std::vector<Visitor*>& visitors) {
  LaneWalker(lane, conventions, visitors).Walk();
}

}  // namespace analysis
