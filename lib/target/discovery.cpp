// Turns the id of a record into a category: one that the log has, one that the controller knows, or one named
// after the id.
#include "target/discovery.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

#include "model/free.h"
#include "target/access.h"
#include "target/acquisition.h"
#include "target/number.h"

namespace {

constexpr u32 nameSize = 255;           // bytes that a target may fill with a name
using NameBuffer = char[nameSize + 1];  // one more, so that the text always ends
constexpr u32 unknownPriority = 7;
constexpr i32 unknownTimeSlice = -1;

std::string PlaceholderName(u32 id) {
  char text[11];
  std::snprintf(text, sizeof text, "0x%08X", id);
  return text;
}

// Targets know variable names of up to 284 characters; what an object's name makes longer is cut.
std::string AddressVariable(const char* object) {
  return ("Watchpoint.Entity." + std::string(object) + ".Prop.Address").substr(0, 284);
}

ETLCatType KindOf(ETLLogType type) {
  if (type == TLLogTimingIssue) return TLCatTimingIssue;
  return type == TLLogTestpoint ? TLCatTestpoint : TLCatTask;
}

// The task list of a controller: a header word, then identifiers. Its memory is zeroed by the system, page by
// page as it is used, so that a size that makes no sense costs nothing.
class TaskList {
 public:
  // Returns the status of the first transfer that failed.
  u32 Fetch(const char* target);
  const u32* begin() const { return words_.get() + std::min<std::size_t>(1, end_); }
  const u32* end() const { return words_.get() + end_; }

 private:
  static constexpr std::size_t portionWords = 120;

  u32 FetchPortions(const char* target, u32 sizeBytes);

  std::unique_ptr<u32[], Free> words_;
  std::size_t end_ = 0;  // words that the transfer filled
};

u32 TaskList::Fetch(const char* target) {
  u32 sizeBytes = 0;
  if (const u32 status = DbgTasksList(target, &sizeBytes, 0)) return status;
  // Rounded up: the fill calls are told the size as it was reported. One word at least, never null.
  const std::size_t wordCount = sizeBytes / 4 + std::size_t{1};
  words_.reset(static_cast<u32*>(std::calloc(wordCount, sizeof(u32))));
  if (!words_) throw std::bad_alloc();
  return FetchPortions(target, sizeBytes);
}

// The target delivers as much as it likes of what it is asked for, and marks with a reserved word that there
// is more behind a portion. That word also marks, put there before, what a portion leaves out; behind the
// last portion, where a target may have delivered all at once, what is left out is still zero.
u32 TaskList::FetchPortions(const char* target, u32 sizeBytes) {
  const std::size_t listWords = sizeBytes / 4;
  std::size_t next = 0;
  u32 remaining = sizeBytes;
  do {
    const std::size_t portion = next == 0 ? portionWords + 1 : portionWords;
    std::fill_n(words_.get() + next, std::min(portion, listWords - next), taskListContinues);
    if (const u32 status = DbgTasksList(target, words_.get() + next, remaining)) return status;
    next += portion;
    remaining -= static_cast<u32>(4 * portion);
  } while (static_cast<i32>(remaining) > 0 && words_[next] == taskListContinues);

  end_ = listWords;
  while (end_ > 1 && words_[end_ - 1] == (end_ > next ? 0 : taskListContinues)) --end_;
  return TL_OK;
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
  TaskList list;
  if (const u32 status = list.Fetch(target.c_str())) return status;
  for (const u32 id : list) {
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
  IdIndex& ids = acquisition.ids;
  if (!ids.IsBuilt()) ids.Build(categories);
  const ETLCatType kind = KindOf(type);
  if (_STLCategory* known = ids.Find(kind, id)) return known;

  bool& fetched = kind == TLCatTask ? acquisition.tasksFetched : acquisition.testpointsFetched;
  if (kind != TLCatTimingIssue && !fetched) {
    const u32 status =
        kind == TLCatTask ? FetchTasks(acquisition.target) : FetchTestpoints(acquisition.target);
    if (status != TL_OK) acquisition.fetchError = status;
    fetched = true;
    acquisition.UpdateIds(categories);
    if (_STLCategory* known = ids.Find(kind, id)) return known;
  }
  const std::size_t known = categories.size();
  _STLCategory* made = MakeCategory(kind, id);
  // A task of the placeholder's name was there, under an id that may now lead to another task or to none.
  if (kind == TLCatTask && categories.size() == known) acquisition.UpdateIds(categories);
  ids.Add(made->GetId(), made);
  ids.Add(id, made);  // a timing issue's code that is not printable is not the id of its category
  return made;
}

// For an id that neither the log nor the target knows.
_STLCategory* _STLTaskLog::MakeCategory(ETLCatType kind, u32 id) {
  if (kind == TLCatTimingIssue) return FindOrCreateTimingIssue(TimingIssueName(id));
  if (kind == TLCatTestpoint) return FindOrCreateTestpoint(PlaceholderName(id), id);
  STLTask* task = FindOrCreateTask(PlaceholderName(id), unknownPriority, unknownTimeSlice);
  task->id = id;
  return task;
}
