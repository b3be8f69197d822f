#include "trigger.h"

#include <fmt/format.h>

#include <algorithm>

#include "analysis/meanings.h"
#include "analysis/walker.h"
#include "commandline.h"
#include "failure.h"
#include "recording.h"
#include "text.h"

namespace cli {
namespace {

struct Kind {
  const char* name;
  std::uint64_t categories;
  std::uint64_t entries;
};

constexpr Kind kinds[] = {{"issue", TL_CATS_TIMING_ISSUES, TL_LOGS_TIMING_ISSUES},
                          {"testpoint", TL_CATS_TESTPOINTS, TL_LOGS_TESTPOINTS},
                          {"event", TL_CATS_TASKS, TL_LOGS_TASK_EVENTS},
                          {"response", TL_CATS_TASKS, TL_LOGS_SWITCHES}};

// The first job of a task whose response is above a limit.
class LongResponse : public analysis::Visitor {
 public:
  LongResponse(const std::vector<analysis::TaskIndex>& tasks, std::uint64_t limit)
      : Visitor(wantsJobs), tasks_(tasks), limit_(limit) {}

  void OnJob(const analysis::Job& job) override {
    const bool isMeant = std::find(tasks_.begin(), tasks_.end(), job.task) != tasks_.end();
    if (!isMeant || job.cutBegin || job.Response() <= limit_) return;
    const std::uint64_t exceeded = job.activation + limit_;
    if (!first_ || exceeded < *first_) first_ = exceeded;
  }
  std::optional<std::uint64_t> First() const { return first_; }

 private:
  const std::vector<analysis::TaskIndex>& tasks_;
  std::uint64_t limit_;
  std::optional<std::uint64_t> first_;
};

// Jobs that were under way at `from` are younger than the limit, or they would have been found before: so
// what lies longer ago need not be looked at again.
std::optional<std::uint64_t> FirstLongResponse(const tasklog::Log& log, const std::string& task,
                                               std::uint64_t limit, std::uint64_t from, std::uint64_t to,
                                               const Metadata& notes) {
  const std::uint64_t begin = std::max(log.StartTime(), from - std::min(from, limit));
  const analysis::Lane lane = analysis::Lane({&log}).Between(begin, to);
  std::string mistake;
  const auto meanings = analysis::Meanings::Parse(notes.switches, mistake);
  const analysis::Conventions conventions{meanings.value_or(analysis::Meanings()),
                                          analysis::FindIdleTask(lane, IdleTaskOf(log, notes.idleTask))};
  const std::vector<analysis::TaskIndex> tasks = lane.Names().TasksNamed(task);
  LongResponse longResponse(tasks, limit);
  analysis::Walk(lane, conventions, {&longResponse});
  return longResponse.First();
}

}  // namespace

Trigger::Trigger(const std::string& selector) : selector_(selector) {
  const std::size_t colon = selector.find(':');
  const std::string kind = selector.substr(0, colon);
  if (colon == std::string::npos || colon + 1 == selector.size()) {
    throw UsageError("--until: " + Quoted(selector) +
                     " is not a selector such as issue:NAME or response:TASK>2ms");
  }
  RequireOneOf("--until", kind, {"issue", "testpoint", "event", "response"});
  name_ = selector.substr(colon + 1);
  for (const Kind& known : kinds) {
    if (kind != known.name) continue;
    categories_ = known.categories;
    entries_ = known.entries;
  }
  if (kind != "response") return;
  const std::size_t above = name_.rfind('>');
  if (above != std::string::npos) limit_ = ParseTimePoint(name_.substr(above + 1));
  if (!limit_)
    throw UsageError("--until: " + Quoted(selector) + " has no limit such as in response:TASK>2ms");
  name_.resize(above);
}

std::uint64_t Trigger::LimitTicks(const tasklog::Log& log) const {
  if (limit_->ticks) return *limit_->ticks;
  if (log.TicksPerSecond() != 0) return limit_->sinceStart.Ticks(log.TicksPerSecond());
  throw Failure("waiting for " + Quoted(selector_) +
                ": the tick rate is unknown, so the limit takes only ticks");
}

std::optional<std::uint64_t> Trigger::FirstIn(const tasklog::Log& log, std::uint64_t from, std::uint64_t to,
                                              const Metadata& notes) const {
  if (!IsResponse()) return FirstEntry(log, from, to);
  return FirstLongResponse(log, name_, LimitTicks(log), from, to, notes);
}

std::optional<std::uint64_t> Trigger::FirstEntry(const tasklog::Log& log, std::uint64_t from,
                                                 std::uint64_t to) const {
  std::optional<std::uint64_t> first;
  for (const auto& category : log.Categories({.types = categories_, .name = name_.c_str()})) {
    for (const auto& entry : log.Entries({.category = category, .types = entries_, .from = from, .to = to})) {
      // The library applies no bound that lies outside the log's period.
      const std::uint64_t tick = entry.Timestamp();
      if (tick < from || tick > to || entry.Subject() != category) continue;
      if (!first || tick < *first) first = tick;
      break;
    }
  }
  return first;
}

std::vector<std::string> Trigger::NamesIn(const tasklog::Log& log) const {
  std::vector<std::string> names;
  for (const auto& category : log.Categories({.types = categories_})) names.emplace_back(category.Name());
  return names;
}

}  // namespace cli
