// Why a job was late: the part of it that grew, and what made that part grow, as far as it can be told.
#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "lateness.h"

namespace analysis {

enum class CauseKind : std::uint8_t {
  execution,
  preemptionLonger,
  preemptionMoreOften,
  preemptionCoincidence,
  blocking,
  sharing,
  dispatch,
  waiting,
  lateActivation,
  overload,
  lostRecords,
  unknown
};
std::string_view NameOf(CauseKind kind);  // as in JSON: "preemption-longer"

// One step of the way to the root.
struct Link {
  CauseKind kind = CauseKind::unknown;
  TaskIndex task = noTask;  // who did it; who waited or came late; `noTask` for what the lane did
  Ticks excess = 0;
  double share = 0;  // of the lateness
  Ticks from = 0;    // the job of `task` that shows it, or the stretch
  Ticks to = 0;
  Ticks at = 0;  // where it was worst
  // What it took normally, and this time: of a job of `task`.
  Ticks normal = 0;
  Ticks actual = 0;
  std::uint32_t normalCount = 0;  // its cycles, where they were more
  std::uint32_t count = 0;
  TaskIndex activator = noTask;        // of `task`, where it came more often
  SubjectIndex raisedAt = noSubject;   // the testpoint that the activator had passed last then
  TaskIndex holder = noTask;           // who ran when a wait ended, if it was the same each time
  SubjectIndex beginMark = noSubject;  // the stretch between two testpoints that grew
  SubjectIndex endMark = noSubject;
};

struct PartExcess {
  PartKind kind;
  TaskIndex task;
  Ticks normal = 0;
  Ticks actual = 0;
  Ticks first = 0;  // when it first came during the job
  Ticks Excess() const { return actual > normal ? actual - normal : 0; }
};

// Deeper no chain goes: nobody would follow it, and tasks that activate each other would not end.
inline constexpr std::size_t longestChain = 9;

struct Cause {
  Ticks normal = 0;  // the response, or the interval of a job that came late
  Ticks actual = 0;
  std::vector<Link> chain;        // from the direct cause to the root, never empty
  std::vector<Link> also;         // parts that grew nearly as much as the first
  std::vector<PartExcess> parts;  // not for a job that came late
  // The root is out of the ordinary by itself, and not two usual things that met.
  bool isAnomaly = false;

  Ticks Excess() const { return actual > normal ? actual - normal : 0; }
  const Link& Root() const { return chain.back(); }
};

class Causes {
 public:
  Causes(const Schedule& schedule, Habits& habits)
      : schedule_(schedule), habits_(habits), finder_(schedule) {}

  Cause Of(const LateJob& late);
  // Adds what is told of a finding alone: the stretches that grew, and the parts in the order of time.
  void Complete(TaskIndex task, const Stretch& job, Cause& cause) const;

 private:
  // A stretch of a job from its activation on, against what is normal for it.
  struct Delay {
    TaskIndex task;
    Stretch stretch;
    std::vector<PartExcess> parts;
    Ticks excess;  // of the whole
  };

  // A wait, by who had the processor meanwhile.
  struct Waiter {
    TaskIndex holder = noTask;  // who ran when it ended
    Ticks idle = 0;
    Ticks holderRan = 0;
    std::vector<Part> others;
  };

  // The lengths of all waits of a task, sorted, and of those at whose end some task ran.
  struct WaitEnds {
    std::vector<Ticks> all;
    std::map<TaskIndex, std::vector<Ticks>> byHolder;
  };

  Delay DelayOf(TaskIndex task, const Stretch& stretch, const std::vector<Part>& normal, Ticks normalLength);
  void Follow(const Delay& delay, Cause& cause);
  void FollowPart(const Delay& delay, const PartExcess& part, Cause& cause);
  void FollowExecution(const Delay& delay, const PartExcess& part, Cause& cause);
  void FollowPreemption(const Delay& delay, const PartExcess& part, Cause& cause);
  bool FollowOwnBurst(const Delay& delay, Cause& cause);
  void FollowSharing(const Delay& delay, const PartExcess& part, Cause& cause);
  void FollowWaiting(const Delay& delay, const PartExcess& part, Cause& cause);
  Waiter LookAtWait(const Stretch& wait) const;
  WaitEnds LookAtWaitsOf(TaskIndex task) const;
  bool EndsWithHolder(TaskIndex task, TaskIndex holder, Ticks length);
  void FollowHolder(const Waiter& seen, const PastJob& holding, const Stretch& wait, Ticks excess,
                    Cause& cause);
  void FollowActivation(TaskIndex task, std::size_t place, Cause& cause);
  bool CameMoreOften(TaskIndex task, const Stretch& stretch, Link& link);
  bool CameInBurst(TaskIndex task, const Stretch& stretch, Link& link);
  void AddLongJob(TaskIndex task, const PastJob& job, Ticks excess, Cause& cause);
  Link MakeLink(CauseKind kind, TaskIndex task, Ticks excess, const Stretch& stretch,
                const Cause& cause) const;
  void FindGrownStretch(Link& link) const;
  void FindRaisePoint(Link& link) const;
  void OrderParts(TaskIndex task, const Stretch& job, std::vector<PartExcess>& parts) const;
  bool IsWithin(const Cause& cause) const;

  const Schedule& schedule_;
  Habits& habits_;
  PartFinder finder_;
  std::map<TaskIndex, WaitEnds> waitEnds_;  // of tasks that were asked for
};

}  // namespace analysis
