// Turns the id of a record into a category: one that the log has, one that the controller knows, or one
// named after the id.
#include "target/discovery.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

#include "model/model.h"
#include "target/access.h"
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

// A testpoint with the longest of names asks for a variable that is cut.
std::string AddressVariable(const char* testpoint) {
  constexpr std::size_t longestVariable = 284;
  return ("Watchpoint.Entity." + std::string(testpoint) + ".Prop.Address").substr(0, longestVariable);
}

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

// The task list of a controller: a header word, then identifiers. Its memory is zeroed by the system, page
// by page as it is used, so that a size that makes no sense costs nothing.
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
  char variable[40];
  double number = 0.0;
  if (const u32 status = GetVariable(target.c_str(), "Watchpoint.Entity!Objects", &number, 0)) return status;
  const u32 count = TruncateToU32(number);
  for (u32 i = 0; i < count; ++i) {
    NameBuffer name = {};
    std::snprintf(variable, sizeof variable, "Watchpoint.Entity!Object%u", i);
    if (const u32 status = GetVariable(target.c_str(), variable, name, nameSize)) return status;
    if (const u32 status = GetVariable(target.c_str(), AddressVariable(name).c_str(), &number, 0))
      return status;
    FindOrCreateTestpoint(name, TruncateToU32(number));
  }
  return TL_OK;
}

_STLCategory* _STLTaskLog::FindOrFetchCategory(u32 id, ETLLogType type, bool& tasksFetched,
                                               bool& testpointsFetched, u32& fetchError,
                                               const std::string& target) {
  if (type == TLLogTimingIssue) {
    _STLCategory* known = FindCategory(TLCatTimingIssue, id);
    return known ? known : FindOrCreateTimingIssue(TimingIssueName(id));
  }
  const ETLCatType kind = type == TLLogTestpoint ? TLCatTestpoint : TLCatTask;
  if (_STLCategory* known = FindCategory(kind, id)) return known;

  bool& fetched = kind == TLCatTask ? tasksFetched : testpointsFetched;
  if (!fetched) {
    const u32 status = kind == TLCatTask ? FetchTasks(target) : FetchTestpoints(target);
    if (status != TL_OK) fetchError = status;
    fetched = true;
    if (_STLCategory* known = FindCategory(kind, id)) return known;
  }
  if (kind == TLCatTestpoint) return FindOrCreateTestpoint(PlaceholderName(id), id);
  STLTask* task = FindOrCreateTask(PlaceholderName(id), unknownPriority, unknownTimeSlice);
  task->id = id;
  return task;
}

// Among categories of one id the one created first counts.
_STLCategory* _STLTaskLog::FindCategory(ETLCatType kind, u32 id) const {
  const auto found = std::find_if(categories.begin(), categories.end(), [=](const _STLCategory* category) {
    return category->GetType() == kind && category->GetId() == id;
  });
  return found != categories.end() ? *found : nullptr;
}
