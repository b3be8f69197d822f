#include "follower.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <vector>

#include "pattern.h"
#include "walker.h"

namespace analysis {
namespace {

// Of tasks that the controller has no more so many are remembered.
constexpr std::size_t mostGoneTasks = 1024;

}  // namespace

bool TaskOrder::operator()(const Task& a, const Task& b) const {
  return std::tie(a.name, a.priority, a.timeSlice) < std::tie(b.name, b.priority, b.timeSlice);
}

Follower::Follower(const Meanings& meanings, std::string idlePattern)
    : meanings_(meanings), idlePattern_(std::move(idlePattern)) {}

void Follower::Take(tasklog::Log log) {
  ++reads_;
  last_ = {};
  for (auto& [task, followed] : tasks_) followed.last = {};
  if (log.EntriesCount() == 0) return;
  // A timer that began anew: nothing before is on the same scale.
  if (before_ && log.StopTime() < before_->StopTime()) before_.reset();
  const bool isFirst = !before_;
  std::vector<const tasklog::Log*> logs{&log};
  if (before_) logs.push_back(&*before_);
  const Lane lane(logs);
  if (isFirst) start_ = next_ = lane.StartTime();
  const bool isQuiet = !isFirst && lane.StopTime() == stop_;
  stop_ = lane.StopTime();
  ticksPerSecond_ = lane.TicksPerSecond();
  Count(lane, stop_ + isQuiet);
  before_ = std::move(log);
}

TaskIndex Follower::IdleTaskOf(const Lane& lane) const {
  if (!idlePattern_.empty()) {
    for (const Task& task : lane.Tasks())
      if (MatchesPattern(idlePattern_, task.name)) return FindIdleTask(lane, task.name);
  }
  return FindIdleTask(lane);
}

void Follower::Count(const Lane& lane, Ticks to) {
  const Conventions conventions{meanings_, IdleTaskOf(lane)};
  Tally tally(lane, conventions.idle, next_, to);
  Walk(lane, conventions, {&tally});
  next_ = std::max(next_, to);
  last_ = tally.OfLane();
  total_.Add(last_);
  for (TaskIndex task = 0; task < lane.Tasks().size(); ++task) {
    FollowedTask& followed = tasks_[lane.Tasks()[task]];
    followed.last = tally.Tasks()[task];
    followed.all.Add(followed.last);
    followed.isIdle = task == conventions.idle;
    followed.seenInRead = reads_;
  }
  ForgetTasks(lane.Tasks().size() + mostGoneTasks);
}

void Follower::ForgetTasks(std::size_t most) {
  if (tasks_.size() <= most) return;
  std::erase_if(tasks_, [this](const auto& item) { return item.second.seenInRead != reads_; });
}

}  // namespace analysis
