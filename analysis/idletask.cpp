// Which task of a lane is the idle task.
#include <algorithm>

#include "meanings.h"
#include "walker.h"

namespace analysis {
namespace {

bool BeginsWithIdle(const std::string& name) {
  constexpr std::string_view idle = "idle";
  const auto isSame = [](char a, char b) { return (b >= 'A' && b <= 'Z' ? b - 'A' + 'a' : b) == a; };
  return name.size() >= idle.size() && std::equal(idle.begin(), idle.end(), name.begin(), isSame);
}

std::vector<TaskIndex> Candidates(const Lane& lane, const std::string& name) {
  if (!name.empty()) return lane.Names().TasksNamed(name);
  std::vector<TaskIndex> found;
  for (TaskIndex task = 0; task < lane.Tasks().size(); ++task) {
    if (!BeginsWithIdle(lane.Tasks()[task].name)) continue;
    if (!found.empty()) {
      const std::uint32_t priority = lane.Tasks()[found[0]].priority;
      if (lane.Tasks()[task].priority > priority) continue;
      if (lane.Tasks()[task].priority < priority) found.clear();
    }
    found.push_back(task);
  }
  return found;
}

class RunTimes : public Visitor {
 public:
  explicit RunTimes(std::size_t taskCount) : Visitor(wantsRuns), ticks_(taskCount) {}
  void OnRun(const Run& run) override {
    if (run.task != noTask) ticks_[run.task] += run.Length();
  }
  Ticks Of(TaskIndex task) const { return ticks_[task]; }

 private:
  std::vector<Ticks> ticks_;
};

}  // namespace

TaskIndex FindIdleTask(const Lane& lane, const std::string& name) {
  const std::vector<TaskIndex> candidates = Candidates(lane, name);
  if (candidates.size() < 2) return candidates.empty() ? noTask : candidates[0];
  RunTimes times(lane.Tasks().size());
  Walk(lane, {}, {&times});
  return *std::max_element(candidates.begin(), candidates.end(),
                           [&](TaskIndex a, TaskIndex b) { return times.Of(a) < times.Of(b); });
}

}  // namespace analysis
