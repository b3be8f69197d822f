// The rules of docs/analysis.md, followed tick by tick. Nothing here is meant to be fast.
#include "tests/analysis/plainwalk.h"

#include <algorithm>
#include <map>

using namespace analysis;

namespace {

struct PlainEntry {
  Ticks time;
  ETLLogType type;
  SubjectIndex subject;
  SubjectIndex running;
  bool IsSwitch() const { return type <= 5 && type != 2; }
  bool MayHaveRun(TaskIndex task) const { return running == task || running == noTask; }
};
using Entries = std::vector<PlainEntry>;

struct PlainTask {
  char does = '-';  // r: ready, x: has the processor, w: waits
  Job job;
  std::map<TaskIndex, Ticks> by;  // who ran while it was ready
  bool seen = false;              // a job, since the start or a gap
  bool countedEvent = false;
  std::vector<Ticks> activations;  // since the start or a gap
};

class PlainWalk {
 public:
  PlainWalk(const Lane& lane, const tasklog::Log& log, const Conventions& conventions)
      : lane_(lane), conventions_(conventions), tasks_(lane.Tasks().size()) {
    for (const tasklog::Entry entry : log.Entries()) {
      if (entry.Timestamp() < lane.StartTime() || entry.Timestamp() > lane.StopTime()) continue;
      const auto index = [&](const auto& category) {
        return category ? lane.Names().Find(category->Handle()) : noSubject;
      };
      entries_.push_back({entry.Timestamp(), entry.Type(), index(entry.Subject()), index(entry.Running())});
    }
  }

  Account Result() {
    now_ = runBegin_ = lane_.StartTime();
    running_ = WhoRanAtStart();
    if (IsWorker(running_)) Resume(tasks_[running_]);
    for (; now_ <= lane_.StopTime(); ++now_) {
      Entries here;
      for (const PlainEntry& entry : entries_)
        if (entry.time == now_) here.push_back(entry);
      if (!here.empty() && !IsLost()) TakeTick(here);
      for (const Gap& gap : lane_.Gaps())
        if (gap.from == now_) Lose(gap.to);
      if (now_ < lane_.StopTime()) CountOneTick();
    }
    now_ = lane_.StopTime();
    EndRun(true);
    CutAll();
    return account_;
  }

 private:
  bool IsLost() const {
    return std::any_of(lane_.Gaps().begin(), lane_.Gaps().end(),
                       [&](const Gap& gap) { return gap.from < now_ && now_ < gap.to; });
  }
  bool IsWorker(TaskIndex task) const { return task != noTask && task != conventions_.idle; }
  std::uint32_t Priority(TaskIndex task) const { return lane_.Tasks()[task].priority; }

  TaskIndex WhoRanAtStart() const {
    const auto first =
        std::find_if(entries_.begin(), entries_.end(), [](const auto& e) { return e.IsSwitch(); });
    if (first == entries_.end() || !lane_.KnowsWhoRan()) return noTask;
    if (!lane_.Gaps().empty() && lane_.Gaps()[0].from < first->time) return noTask;
    for (auto e = first; e != entries_.end() && e->time == first->time; ++e) {
      if (!e->IsSwitch() || e->running == noTask) continue;
      bool isSwitchedTo = false;
      for (const PlainEntry& other : entries_)
        isSwitchedTo |= other.time == first->time && other.IsSwitch() && other.subject == e->running;
      if (!isSwitchedTo) return e->running;
    }
    return first->running;
  }

  void CountOneTick() {
    for (const Gap& gap : lane_.Gaps())
      if (gap.from <= now_ && now_ < gap.to) return;
    for (PlainTask& task : tasks_) {
      task.job.execution += task.does == 'x';
      task.job.waiting += task.does == 'w';
      if (task.does == 'r') ++task.by[IsWorker(running_) ? running_ : noTask];
    }
  }

  void TakeTick(const Entries& here) {
    const auto switches = std::count_if(here.begin(), here.end(), [](const auto& e) { return e.IsSwitch(); });
    const bool isFirstRecord = lane_.BeginsLog() && here.size() == 1 && now_ == entries_[0].time;
    if (switches > 0) return TakeSwitches(here, switches == 1, isFirstRecord);
    for (const PlainEntry& e : here) {
      TellMark(e.type, e.subject);
      if (e.type == 2) BecomeReady(e.subject, running_, !isFirstRecord);
    }
  }

  void TakeSwitches(const Entries& here, bool isAlone, bool isFirstRecord) {
    const TaskIndex before = running_;
    for (const PlainEntry& e : here)
      if (e.type > 5 && before != noTask && e.MayHaveRun(before)) TellMark(e.type, e.subject);
    const TaskIndex behind = isAlone ? TheSwitch(here).subject : Behind(here);
    const Meaning meaning = behind == before ? Meaning::done
                            : isAlone        ? MeaningOf(TheSwitch(here).type, behind)
                                             : MeaningOf(TypeOfLeaving(here, behind), behind);
    const bool leaves = behind != before || BeganAnew(here);
    if (behind != before) EndRun(false);
    if (leaves && IsWorker(before)) Leave(tasks_[before], meaning);
    isAlone ? EventsMakeReady(here, before) : OthersBecomeReady(here, before, behind);
    running_ = behind;
    if (leaves) Enter(behind, meaning, !isFirstRecord);
    for (const PlainEntry& e : here)
      if (e.type > 5 && (before == noTask || !e.MayHaveRun(before))) TellMark(e.type, e.subject);
  }

  static const PlainEntry& TheSwitch(const Entries& here) {
    return *std::find_if(here.begin(), here.end(), [](const auto& e) { return e.IsSwitch(); });
  }

  static std::vector<TaskIndex> Named(const Entries& here) {
    std::vector<TaskIndex> named;
    for (const PlainEntry& e : here)
      if (e.type <= 5 && e.subject != noTask && std::count(named.begin(), named.end(), e.subject) == 0)
        named.push_back(e.subject);
    return named;
  }

  TaskIndex Behind(const Entries& here) const {
    std::vector<TaskIndex> named = Named(here);
    if (named.size() == 1) return named[0];
    const auto later = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const auto& e) { return e.IsSwitch() && e.time > now_; });
    std::vector<TaskIndex> fitting;
    for (auto e = later; e != entries_.end() && e->time == later->time; ++e)
      if (e->IsSwitch() && e->running != noTask &&
          (e->running == running_ || std::count(named.begin(), named.end(), e->running) > 0))
        fitting.push_back(e->running);
    if (fitting.empty()) fitting = named;
    const auto best = std::max_element(fitting.begin(), fitting.end(),
                                       [&](TaskIndex a, TaskIndex b) { return Priority(a) < Priority(b); });
    return best == fitting.end() ? noTask : *best;
  }

  int TypeOfLeaving(const Entries& here, TaskIndex behind) const {
    int type = running_ != noTask && running_ == conventions_.idle ? 3 : 4;
    for (const PlainEntry& e : here) {
      if (!e.IsSwitch()) continue;
      if (running_ == noTask && e.subject == behind) type = e.type;
      if (running_ != noTask && e.MayHaveRun(running_) && e.type != 3 && e.type != 4) type = e.type;
    }
    return type;
  }

  Meaning MeaningOf(int type, TaskIndex to) const {
    Meaning meaning = conventions_.meanings.Of(static_cast<ETLLogType>(type));
    if (meaning == Meaning::fromIdle && IsWorker(running_)) meaning = Meaning::plain;
    if (meaning != Meaning::plain) return meaning;
    const bool isHigher = running_ != noTask && to != noTask && Priority(to) > Priority(running_);
    return isHigher ? Meaning::preempted : Meaning::done;
  }

  bool BeganAnew(const Entries& here) const {
    return IsWorker(running_) && std::any_of(here.begin(), here.end(), [&](const PlainEntry& e) {
             const Meaning meaning = e.IsSwitch() ? conventions_.meanings.Of(e.type) : Meaning::waits;
             return (meaning == Meaning::done && e.MayHaveRun(running_)) ||
                    (meaning == Meaning::plain && e.subject == conventions_.idle);
           });
  }

  void EventsMakeReady(const Entries& here, TaskIndex before) {
    for (const PlainEntry& e : here) {
      if (e.type != 2) continue;
      account_.insert(MarkLine({TLLogTaskEvent, e.subject, before, now_}));
      BecomeReady(e.subject, before, true);
    }
  }

  void OthersBecomeReady(const Entries& here, TaskIndex before, TaskIndex behind) {
    for (const TaskIndex task : Named(here)) {
      const auto isSwitchTo = [&](const auto& e) { return e.IsSwitch() && e.subject == task; };
      const auto isEventFor = [&](const auto& e) { return e.type == 2 && e.subject == task; };
      const bool isEvent = std::any_of(here.begin(), here.end(), isEventFor) ||
                           std::count_if(here.begin(), here.end(), isSwitchTo) > 1;
      if (isEvent) account_.insert(MarkLine({TLLogTaskEvent, task, before, now_}));
      const bool completed = task != before && IsWorker(task) && Completed(here, task, behind);
      if (isEvent || (task != behind && !completed)) BecomeReady(task, before, true);
      if (completed) CompleteAtOnce(tasks_[task], task);
    }
  }

  bool Completed(const Entries& here, TaskIndex task, TaskIndex behind) const {
    return std::any_of(here.begin(), here.end(), [&](const PlainEntry& e) {
      if (!e.IsSwitch() || e.running != task) return false;
      const Meaning meaning = conventions_.meanings.Of(e.type);
      const bool isOutranked = behind != noTask && Priority(behind) > Priority(task);
      return meaning == Meaning::done || (meaning == Meaning::plain && !isOutranked);
    });
  }

  void CompleteAtOnce(PlainTask& task, TaskIndex index) {
    if (task.does == '-') {
      Begin(task, index);
      task.job.cutBegin = !task.seen;
    }
    if (!task.job.hasRun) task.job.start = now_;
    task.job.hasRun = true;
    EndJob(task);
  }

  void BecomeReady(TaskIndex index, TaskIndex by, bool begins) {
    if (!IsWorker(index)) return;
    PlainTask& task = tasks_[index];
    if (task.does != '-') {
      ++task.job.events;
      if (task.does == 'w') task.does = 'r';
    } else if (begins) {
      Begin(task, index);
      task.job.byEvent = true;
      if (IsWorker(by)) {
        task.job.activator = by;
        task.job.activatorExecution = tasks_[by].job.execution;
      }
    }
  }

  void Enter(TaskIndex index, Meaning meaning, bool begins) {
    if (!IsWorker(index)) {
      if (index != noTask) DropAbove(-1);
      return;
    }
    PlainTask& task = tasks_[index];
    const bool asked = meaning == Meaning::done || meaning == Meaning::slice;
    if (task.does == '-') {
      const bool goesOn = !task.seen && (asked || meaning == Meaning::waits || !begins);
      Begin(task, index);
      task.job.askedEarlier = asked && task.countedEvent;
      task.job.cutBegin = goesOn;
    }
    if (!task.job.hasRun) {
      task.job.hasRun = true;
      task.job.start = now_;
      if (!task.job.cutBegin) DropAbove(Priority(index));
    }
    task.does = 'x';
  }

  void Resume(PlainTask& task) {
    Begin(task, static_cast<TaskIndex>(&task - tasks_.data()));
    task.job.start = now_;
    task.job.hasRun = task.job.cutBegin = true;
    task.does = 'x';
  }

  void Begin(PlainTask& task, TaskIndex index) {
    task.job = Job();
    task.job.task = index;
    task.job.activation = now_;
    task.by.clear();
    task.does = 'r';
  }

  void DropAbove(std::int64_t priority) {
    for (PlainTask& task : tasks_) {
      if (task.does == '-' || !task.job.byEvent || task.job.hasRun || Priority(task.job.task) <= priority)
        continue;
      account_.insert("dropped " + std::to_string(task.job.task) + ' ' + std::to_string(task.job.activation));
      task.does = '-';
    }
  }

  void Leave(PlainTask& task, Meaning meaning) {
    task.job.preemptions += meaning == Meaning::preempted;
    task.job.slices += meaning == Meaning::slice;
    task.job.waits += meaning == Meaning::waits;
    task.does = meaning == Meaning::waits ? 'w' : 'r';
    if (meaning == Meaning::done || meaning == Meaning::fromIdle) EndJob(task);
  }

  void EndJob(PlainTask& task) {
    Job& job = task.job;
    job.end = now_;
    task.does = '-';
    task.seen = true;
    task.countedEvent = job.events > 0;
    if (!job.cutBegin) {
      job.hasInterval = !task.activations.empty();
      if (job.hasInterval) job.interval = job.activation - task.activations.back();
      task.activations.push_back(job.activation);
    }
    std::string line = JobLine(job);
    std::map<PartKind, std::string> parts;
    for (const auto& [by, ticks] : task.by) {
      const PartKind kind = by == noTask                        ? PartKind::dispatch
                            : Priority(by) > Priority(job.task) ? PartKind::preemption
                            : Priority(by) < Priority(job.task) ? PartKind::blocking
                                                                : PartKind::sharing;
      parts[kind] += ", " + std::string(NameOf(kind)) + ' ' + std::to_string(static_cast<int>(by)) + ' ' +
                     std::to_string(ticks);
    }
    if (job.waiting > 0) parts[PartKind::waiting] = ", waiting -1 " + std::to_string(job.waiting);
    if (job.IsWhole())
      for (const auto& [kind, text] : parts) line += text;
    account_.insert(line);
  }

  void CutAll() {
    for (PlainTask& task : tasks_) {
      if (task.does != '-') {
        task.job.cutEnd = true;
        EndJob(task);
      }
      task.seen = task.countedEvent = false;
      task.activations.clear();
    }
  }

  void Lose(Ticks until) {
    EndRun(true);
    CutAll();
    running_ = noTask;
    runBegin_ = until;
    runIsCut_ = true;
  }

  void EndRun(bool isCut) {
    if (now_ > runBegin_) account_.insert(RunLine({running_, runBegin_, now_, runIsCut_, isCut}));
    runBegin_ = now_;
    runIsCut_ = now_ == lane_.StartTime();
  }

  void TellMark(ETLLogType type, SubjectIndex subject) {
    account_.insert(MarkLine({type, subject, running_, now_}));
  }

  const Lane& lane_;
  const Conventions& conventions_;
  Entries entries_;
  std::vector<PlainTask> tasks_;
  Account account_;
  Ticks now_ = 0;
  TaskIndex running_ = noTask;
  Ticks runBegin_ = 0;
  bool runIsCut_ = true;
};

}  // namespace

Account PlainAccount(const Lane& lane, const tasklog::Log& log, const Conventions& conventions) {
  return PlainWalk(lane, log, conventions).Result();
}
