#include "trigger.h"

#include "commandline.h"
#include "failure.h"
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
                          {"event", TL_CATS_TASKS, TL_LOGS_TASK_EVENTS}};

}  // namespace

Trigger::Trigger(const std::string& selector) : selector_(selector) {
  const std::size_t colon = selector.find(':');
  const std::string kind = selector.substr(0, colon);
  if (colon == std::string::npos || colon + 1 == selector.size()) {
    throw UsageError("--until: " + Quoted(selector) +
                     " is not a selector such as issue:NAME or testpoint:NAME");
  }
  RequireOneOf("--until", kind, {"issue", "testpoint", "event"});
  name_ = selector.substr(colon + 1);
  for (const Kind& known : kinds) {
    if (kind != known.name) continue;
    categories_ = known.categories;
    entries_ = known.entries;
  }
}

std::optional<std::uint64_t> Trigger::FirstIn(const tasklog::Log& log, std::uint64_t from,
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
