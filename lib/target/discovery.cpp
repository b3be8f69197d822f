// Finds the category of a record's id: one that the log has, one that the controller knows, or one named
// after the id.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "model/block.h"
#include "target/access.h"
#include "target/acquisition.h"
#include "target/target.h"

namespace {

constexpr u32 nameSize = 255;           // bytes that a name from a controller may fill
using NameBuffer = char[nameSize + 1];  // one more, so that the text always ends
constexpr u32 unknownPriority = 7;
constexpr i32 unknownTimeSlice = -1;

std::string PlaceholderName(u32 id) {
  char text[11];
  std::snprintf(text, sizeof text, "0x%08X", id);
  return text;
}

// Controllers know variable names of up to 284 characters, so a longer one is cut.
std::string AddressVariable(const char* object) {
  return ("Watchpoint.Entity." + std::string(object) + ".Prop.Address").substr(0, 284);
}

ETLCatType KindOf(ETLLogType type) {
  if (type == TLLogTimingIssue) return TLCatTimingIssue;
  return type == TLLogTestpoint ? TLCatTestpoint : TLCatTask;
}

// Marks a word of a task list that the controller leaves out. The mark differs from place to place, so that
// no list repeats it by accident, and is never the word that continues a list. Marking touches memory, so it
// stops where no real list reaches. Behind, a word that is left out is zero, and a size that makes no sense
// costs little.
constexpr std::size_t markedWords = std::size_t{1} << 20;
u32 LeftOut(std::size_t place) {
  if (place >= markedWords) return 0;
  return 0xA5000000 | static_cast<u32>(place) * 0x9E3779B1 >> 8;
}

// Gives the ids that the controller lists: a header word, then one for each task. The controller delivers a
// portion or more of what it is asked for. Where more is to come, a reserved word stands behind the portion;
// otherwise the rest may be there already. Returns the status of a transfer that failed.
u32 FetchTaskIds(const char* target, std::vector<u32>& ids) {
  constexpr std::size_t portionWords = 120;
  u32 remaining = 0;  // bytes
  if (const u32 status = DbgTasksList(target, &remaining, 0)) return status;
  const std::size_t count = remaining / 4;
  // Each transfer gets the size as the controller reported it, which need not be one of whole words. One word
  // more, so that no size gives null.
  const std::unique_ptr<u32[], Free> words(static_cast<u32*>(std::calloc(count + 1, sizeof(u32))));
  if (!words) throw std::bad_alloc();
  for (std::size_t i = 0; i < std::min(count, markedWords); ++i) words[i] = LeftOut(i);

  std::size_t next = 0;
  do {
    if (const u32 status = DbgTasksList(target, words.get() + next, remaining)) return status;
    const std::size_t portion = next == 0 ? 1 + portionWords : portionWords;
    next += portion;
    remaining -= static_cast<u32>(4 * portion);
  } while (static_cast<i32>(remaining) > 0 && words[next] == taskListContinues);

  for (std::size_t i = 1; i < count; ++i)
    if (words[i] != LeftOut(i)) ids.push_back(words[i]);
  return TL_OK;
}

// The following make the category of an id that neither the log nor the controller knows.

// A code that is not printable is not the id of its category; later records find the category under both.
_STLCategory* NameTimingIssue(_STLTaskLog& log, u32 code, _STLTaskLog::Acquisition& acquisition) {
  STLTimingIssue* issue = log.FindOrCreateTimingIssue(TimingIssueName(code));
  acquisition.ids.Add(issue->GetId(), issue);
  acquisition.ids.Add(code, issue);
  return issue;
}

_STLCategory* PutUnknownTestpoint(_STLTaskLog& log, u32 id, _STLTaskLog::Acquisition& acquisition) {
  STLTestpoint* testpoint = log.FindOrCreateTestpoint(PlaceholderName(id), id);
  acquisition.ids.Add(id, testpoint);
  return testpoint;
}

// There may be a task of that name, known by another id until now.
_STLCategory* PutUnknownTask(_STLTaskLog& log, u32 id, _STLTaskLog::Acquisition& acquisition) {
  STLTask* task = log.FindOrCreateTask(PlaceholderName(id), unknownPriority, unknownTimeSlice);
  const u32 former = std::exchange(task->id, id);
  acquisition.ids.Add(id, task);
  acquisition.known.ChangeTaskId(*task, former);
  return task;
}

}  // namespace

std::string TimingIssueName(u32 code) {
  std::string name;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const u8 character = static_cast<u8>(code >> shift);
    if (!std::isprint(character)) return PlaceholderName(code);
    name += static_cast<char>(character);
  }
  return name;
}

u32 _STLTaskLog::FetchTasks(const std::string& target) {
  std::vector<u32> ids;
  if (const u32 status = FetchTaskIds(target.c_str(), ids)) return status;
  for (const u32 id : ids) {
    NameBuffer name = {};
    i32 timeSlice = 0;
    u32 priorityWord = 0;
    if (const u32 status = DbgTaskGetName(target.c_str(), id, name, nameSize)) return status;
    if (const u32 status = DbgTaskGetData(target.c_str(), id, taskDataTimeSlice, &timeSlice, 4))
      return status;
    if (const u32 status = DbgTaskGetData(target.c_str(), id, taskDataPriority, &priorityWord, 4))
      return status;
    FindOrCreateTask(name, priorityWord >> 16 & 0xFF, timeSlice)->id = id;
  }
  return TL_OK;
}

u32 _STLTaskLog::FetchTestpoints(const std::string& target) {
  double number = 0.0;
  if (const u32 status = GetVariable(target.c_str(), "Watchpoint.Entity!Objects", &number, 0)) return status;
  const u32 count = TruncateToU32(number);
  for (u32 i = 0; i < count; ++i) {
    NameBuffer name = {};
    const std::string nameVariable = "Watchpoint.Entity!Object" + std::to_string(i);
    if (const u32 status = GetVariable(target.c_str(), nameVariable.c_str(), name, nameSize)) return status;
    const std::string addressVariable = AddressVariable(name);
    if (const u32 status = GetVariable(target.c_str(), addressVariable.c_str(), &number, 0)) return status;
    FindOrCreateTestpoint(name, TruncateToU32(number));
  }
  return TL_OK;
}

_STLCategory* _STLTaskLog::FindOrFetchCategory(u32 id, ETLLogType type, Acquisition& acquisition) {
  if (!acquisition.ids.IsBuilt()) acquisition.ids.Build(categories);
  const ETLCatType kind = KindOf(type);
  if (_STLCategory* known = acquisition.ids.Find(kind, id)) return known;

  if (kind == TLCatTimingIssue) return NameTimingIssue(*this, id, acquisition);
  bool& fetched = kind == TLCatTask ? acquisition.tasksFetched : acquisition.testpointsFetched;
  if (!fetched) {
    const u32 status =
        kind == TLCatTask ? FetchTasks(acquisition.target) : FetchTestpoints(acquisition.target);
    if (status != TL_OK) acquisition.fetchError = status;
    fetched = true;
    acquisition.ids.Build(categories);
    acquisition.known.ForgetIds();
    if (_STLCategory* known = acquisition.ids.Find(kind, id)) return known;
  }
  return kind == TLCatTask ? PutUnknownTask(*this, id, acquisition)
                           : PutUnknownTestpoint(*this, id, acquisition);
}
