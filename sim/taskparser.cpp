// The task set of one processor.
#include <algorithm>

#include "parser.h"
#include "tomltable.h"

namespace sim {
namespace {

constexpr size_t longestName = 200;
constexpr size_t mostTasks = 10'000;
constexpr size_t mostTestpoints = 4096;
constexpr size_t mostLocks = 64;
// So many stretches of a day each keep a cycle within 64 bits.
constexpr size_t mostActions = 10'000;
constexpr uint32_t firstTestpointAddress = 0x00FF0000;
constexpr uint32_t testpointDistance = 16;

std::string ParseName(TomlTable& table, const char* key) {
  const std::string name = table.RequiredText(key);
  const bool plain =
      std::all_of(name.begin(), name.end(), [](unsigned char c) { return c >= 0x20 && c != 0x7F; });
  if (name.size() > longestName || !plain) table.Fail(key, "at most 200 bytes without control characters");
  return name;
}

// A code is packed as a record holds it: the first character in the top byte.
uint32_t ParseCode(TomlTable& table, const char* key, const std::string& text) {
  const bool printable = std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c <= 0x7E; });
  if (text.size() != 4 || !printable) table.Fail(key, "four printable characters");
  uint32_t code = 0;
  for (const char c : text) code = code << 8 | static_cast<unsigned char>(c);
  return code;
}

// The keys "every", "one_in" and "after".
When ParseWhen(TomlTable& table) {
  const auto every = table.Integer("every", 1, INT64_MAX);
  const auto oneIn = table.Integer("one_in", 1, INT64_MAX);
  if (every && oneIn) table.Fail("one_in", "either this or every");
  When when;
  when.every = static_cast<uint64_t>(every.value_or(oneIn.value_or(1)));
  when.isRandom = oneIn.has_value();
  when.afterNs = table.Duration("after").value_or(0);
  return when;
}

Longer ParseLonger(TomlTable& table, const char* key) {
  auto item = table.Table(key);
  if (!item) return {};
  Longer longer;
  longer.byNs = item->RequiredDuration("by", 1);
  longer.when = ParseWhen(*item);
  item->Finish();
  return longer;
}

// Reads the actions of one task. The tasks of the processor are all known by name.
class ActionParser {
 public:
  ActionParser(ProcessorSpec& processor, Task& task, NamesInUse& names)
      : processor_(processor), task_(task), names_(names) {}

  void Parse(TomlTable& table) {
    for (TomlTable& item : table.Tables("testpoints")) ParseTestpoint(item);
    for (TomlTable& item : table.Tables("events")) ParseEvent(item);
    for (TomlTable& item : table.Tables("issues")) ParseIssue(item);
    for (TomlTable& item : table.Tables("waits")) ParseWait(item);
    for (TomlTable& item : table.Tables("stretches")) ParseStretch(item);
    for (TomlTable& item : table.Tables("locks")) ParseLock(item);
    for (TomlTable& item : table.Tables("unpreemptible")) {
      AddPair(item, Action{Action::Kind::blockPreemption}, Action::Kind::allowPreemption);
    }
    std::stable_sort(task_.actions.begin(), task_.actions.end(),
                     [](const Action& a, const Action& b) { return a.atNs < b.atNs; });
  }

 private:
  void Add(TomlTable& item, Action action) {
    action.atNs = item.Duration("at").value_or(0);
    if (action.atNs > task_.runNs + task_.jitterNs + task_.overrun.byNs) {
      item.Fail("at", "a point within the longest run time of the task");
    }
    action.when = ParseWhen(item);
    if (task_.actions.size() >= mostActions) item.Fail("at most 10000 actions of a task");
    item.Finish();
    task_.actions.push_back(action);
  }

  // What begins here and ends after so much run time; the end comes in every cycle and finds nothing to end
  // in some.
  void AddPair(TomlTable& item, Action begin, Action::Kind end) {
    const uint64_t lastsNs = item.RequiredDuration("for", 1);
    begin.id = static_cast<uint32_t>(task_.actions.size());
    Add(item, begin);
    begin.kind = end;
    begin.atNs = task_.actions.back().atNs + lastsNs;
    task_.actions.push_back(begin);
  }

  void ParseTestpoint(TomlTable& item) {
    const std::string name = ParseName(item, "name");
    auto& places = names_.testpoints;
    const auto count = static_cast<uint32_t>(places.size());
    const NamesInUse::TestpointPlace next{processor_.number,
                                          firstTestpointAddress + count * testpointDistance};
    const auto [place, isNew] = places.try_emplace(name, next);
    if (place->second.processor != processor_.number)
      item.Fail("name", "a testpoint that no other kernel has");
    if (isNew && count == mostTestpoints) item.Fail("at most 4096 testpoints");
    if (isNew) processor_.testpoints.push_back({name, place->second.address});
    Action action{Action::Kind::testpoint};
    action.id = place->second.address;
    Add(item, action);
  }

  void ParseEvent(TomlTable& item) {
    const std::string name = ParseName(item, "task");
    const auto found = names_.tasks.find(name);
    if (found == names_.tasks.end() || found->second.processor != processor_.number) {
      item.Fail("task", "the name of a task of the same kernel");
    }
    Action action{Action::Kind::event};
    action.index = found->second.index;
    Add(item, action);
  }

  void ParseIssue(TomlTable& item) {
    Action action{Action::Kind::issue};
    action.id = ParseCode(item, "code", item.RequiredText("code"));
    Add(item, action);
  }

  void ParseWait(TomlTable& item) {
    Action action{Action::Kind::wait};
    action.lastsNs = item.RequiredDuration("for", 1);
    action.jitterNs = item.Duration("jitter").value_or(0);
    if (action.jitterNs >= action.lastsNs) item.Fail("jitter", "less than the wait");
    action.longer = ParseLonger(item, "longer");
    Add(item, action);
  }

  void ParseStretch(TomlTable& item) {
    Action action{Action::Kind::stretch};
    action.lastsNs = item.RequiredDuration("by", 1);
    Add(item, action);
  }

  void ParseLock(TomlTable& item) {
    const std::string name = ParseName(item, "lock");
    auto& locks = processor_.locks;
    const auto found = std::find(locks.begin(), locks.end(), name);
    Action action{Action::Kind::lock};
    action.index = static_cast<uint32_t>(found - locks.begin());
    if (found == locks.end() && locks.size() == mostLocks) item.Fail("lock", "at most 64 locks of a kernel");
    if (found == locks.end()) locks.push_back(name);
    AddPair(item, action, Action::Kind::unlock);
  }

  ProcessorSpec& processor_;
  Task& task_;
  NamesInUse& names_;
};

void ParseRunTime(TomlTable& table, Task& task) {
  task.runNs = table.RequiredDuration("run", 1);
  task.jitterNs = table.Duration("jitter").value_or(0);
  if (task.jitterNs >= task.runNs) table.Fail("jitter", "less than the run time");
  task.overrun = ParseLonger(table, "overrun");
}

void ParseBurst(TomlTable& table, Task& task) {
  auto item = table.Table("burst");
  if (!item) return;
  if (task.periodNs == 0) table.Fail("burst", "a period with it");
  const auto count = item->Integer("count", 1, INT64_MAX);
  if (!count) item->Fail("count", "a number of releases");
  task.burst.count = static_cast<uint64_t>(*count);
  task.burst.spacingNs = item->RequiredDuration("spacing", 1);
  task.burst.when = ParseWhen(*item);
  item->Finish();
}

void ParseRelease(TomlTable& table, Task& task) {
  task.periodNs = table.Duration("period", 1).value_or(0);
  task.offsetNs = table.Duration("offset").value_or(0);
  if (task.offsetNs > 0 && task.periodNs == 0) table.Fail("offset", "a period with it");
  task.releaseJitterNs = table.Duration("release_jitter").value_or(0);
  task.driftNs = table.Duration("drift").value_or(0);
  const uint64_t variesNs = task.releaseJitterNs + task.driftNs;
  if (variesNs > 0 && variesNs >= task.periodNs) {
    table.Fail("release_jitter", "a period that is longer, drift included");
  }
  task.appearsNs = table.Duration("appears").value_or(0);
  ParseBurst(table, task);
  task.deadlineNs = table.Duration("deadline", 1).value_or(0);
  if (task.periodNs > 0 && task.deadlineNs >= task.periodNs) {
    table.Fail("deadline", "less than the period, which is the deadline anyway");
  }
  task.lateIssue = ParseCode(table, "late_issue", table.Text("late_issue").value_or("OVRN"));
}

// Hosts tell tasks apart by name, also those of several kernels in one log.
void ClaimName(TomlTable& table, const char* key, const ProcessorSpec& processor, const std::string& name,
               NamesInUse& names) {
  const auto index = static_cast<uint32_t>(processor.tasks.size());
  if (!names.tasks.try_emplace(name, NamesInUse::TaskPlace{processor.number, index}).second)
    table.Fail(key, "a name that no other task has");
}

Task ParseTask(TomlTable& table, const ProcessorSpec& processor, NamesInUse& names) {
  Task task;
  task.line = table.Line();
  task.name = ParseName(table, "name");
  ClaimName(table, "name", processor, task.name, names);
  const auto priority = table.Integer("priority", 1, 255);
  if (!priority) table.Fail("priority", "an integer from 1 to 255");
  task.priority = static_cast<uint8_t>(*priority);
  // A host reads the slice as microseconds in 32 bits; an hour fits.
  task.sliceNs = table.Duration("slice", 1000).value_or(0);
  if (task.sliceNs > 3600 * nsPerSecond) table.Fail("slice", "at most an hour");
  ParseRunTime(table, task);
  ParseRelease(table, task);
  return task;
}

Task IdleTask(TomlTable& table, const ProcessorSpec& processor, NamesInUse& names) {
  Task idle;
  const bool isScheduler = processor.number == schedulerNumber;
  idle.name = isScheduler ? "Idle" : "Idle" + std::to_string(processor.number);
  if (table.Text("idle")) idle.name = ParseName(table, "idle");
  ClaimName(table, "idle", processor, idle.name, names);
  return idle;
}

}  // namespace

void ParseTasks(TomlTable& table, ProcessorSpec& processor, uint32_t firstTaskId, NamesInUse& names) {
  std::vector<TomlTable> items = table.Tables("task");
  if (items.size() > mostTasks) table.Fail("task", "at most 10000 tasks");
  for (TomlTable& item : items) processor.tasks.push_back(ParseTask(item, processor, names));
  for (size_t i = 0; i < items.size(); ++i) {
    ActionParser(processor, processor.tasks[i], names).Parse(items[i]);
    items[i].Finish();
  }
  processor.inheritance = table.Boolean("inheritance").value_or(false);
  processor.tasks.push_back(IdleTask(table, processor, names));
  for (Task& task : processor.tasks) task.id = firstTaskId++;
}

}  // namespace sim
