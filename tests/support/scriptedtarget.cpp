// The scripted target-access library, whose allocations are not the library's: linked into test programs, and
// a libquor_32.so.0 of its own.
#include "support/scriptedtarget.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "support/allocations.h"
#include "target/access.h"

namespace {

ScriptedTarget* script = nullptr;  // in force

std::string Text(const char* text) { return text; }
std::string Text(std::int64_t number) { return std::to_string(number); }

std::string Hex(std::uint32_t value) {
  constexpr char digits[] = "0123456789ABCDEF";
  int shift = 28;
  while (shift > 0 && value >> shift == 0) shift -= 4;
  std::string text = "0x";
  for (; shift >= 0; shift -= 4) text += digits[value >> shift & 0xF];
  return text;
}

// Records a call; a status other than 0 is to be returned at once.
template <class... Arguments>
std::uint32_t Record(const char* function, const char* target, const Arguments&... arguments) {
  if (!script) return ScriptedTarget::noScript;
  std::string call(function);
  call.reserve(64);
  call.append("(").append(target);
  (call.append(", ").append(arguments), ...);
  return script->Record(std::move(call.append(")")));
}

}  // namespace

ScriptedTarget::ScriptedTarget() : previous(script) { script = this; }
ScriptedTarget::~ScriptedTarget() { script = previous; }

std::string ScriptedTarget::CallsOf(const std::string& beginning) const {
  std::string text;
  for (const std::string& call : calls) {
    if (call.starts_with(beginning)) text += (text.empty() ? "" : "; ") + call;
  }
  return text;
}

std::uint32_t ScriptedTarget::Record(std::string call) {
  if (calls.empty()) calls.reserve(32);
  calls.push_back(std::move(call));
  const std::size_t number = calls.size();
  if (const auto change = changes.find(number); change != changes.end()) change->second();
  if (const auto failure = failingCalls.find(number); failure != failingCalls.end()) return failure->second;
  for (const auto& [part, status] : failures) {
    if (calls.back().find(part) != std::string::npos) return status;
  }
  return 0;
}

void ScriptedTarget::PutText(const std::string& text, char* buffer, std::uint32_t size) const {
  if (terminatesTexts) {
    std::snprintf(buffer, size, "%s", text.c_str());
  } else {
    std::memset(buffer, 'x', size);
    std::memcpy(buffer, text.data(), std::min<std::size_t>(size, text.size()));
  }
}

void ScriptedTarget::FillList(std::uint32_t* words, std::uint32_t size) {
  std::vector<std::uint32_t> list = {0xC0FFEE00};  // the header word means nothing
  for (const ScriptedTask& task : tasks) list.push_back(task.id);
  const std::size_t room = size / 4;
  const std::size_t portion = std::min({room, list.size() - listNext, listPortionWords + !listNext});
  // A target may use its buffer to the last byte, also where the size is no whole number of words.
  std::memset(words + room, 0xEE, size % 4);
  std::copy_n(list.begin() + static_cast<std::ptrdiff_t>(listNext), portion, words);
  listNext += portion;
  if (listNext < list.size() && portion < room && ++listFills < listPortions) {
    words[portion] = taskListContinues;
  }
}

const ScriptedTask* ScriptedTarget::FindTask(std::uint32_t id) const {
  const auto task = std::find_if(tasks.begin(), tasks.end(), [&](const auto& t) { return t.id == id; });
  return task == tasks.end() ? nullptr : &*task;
}

uint32_t GetVariable(const char* target, const char* name, void* value, uint32_t size) {
  const AllocationPause pause;
  if (const auto status = Record("GetVariable", target, Text(name), Text(size))) return status;
  if (size > 0) {
    const auto text = script->texts.find(std::string_view(name));
    if (text == script->texts.end()) return noSuchVariable;
    script->PutText(text->second, static_cast<char*>(value), size);
  } else {
    const auto number = script->numbers.find(std::string_view(name));
    if (number == script->numbers.end()) return noSuchVariable;
    std::memcpy(value, &number->second, sizeof number->second);
  }
  return 0;
}

uint32_t PutVariable(const char* target, const char* name, const void* data, uint32_t size) {
  const AllocationPause pause;
  if (const auto status = Record("PutVariable", target, Text(name), Text(size))) return status;
  if (!script->texts.contains(name)) return noSuchVariable;
  script->texts[name] = std::string(static_cast<const char*>(data), size);
  return 0;
}

uint32_t CallProcedure(const char* target, const char* name, double* result) {
  const AllocationPause pause;
  if (const auto status = Record("CallProcedure", target, Text(name))) return status;
  const auto procedure = script->procedures.find(name);
  if (procedure == script->procedures.end()) return noSuchProcedure;
  *result = procedure->second;
  return 0;
}

uint32_t GetBlock32(const char* target, int64_t address, uint32_t* words, uint32_t count) {
  const AllocationPause pause;
  if (const auto status = Record("GetBlock32", target, Text(address), Text(count))) return status;
  const auto block = script->memory.find(address);
  if (block == script->memory.end() || block->second.size() < count) return ScriptedTarget::badAddress;
  std::copy_n(block->second.begin(), count, words);
  return 0;
}

// A fill is recorded with its place in the list: "DbgTasksList(ctl, +484, 4)".
uint32_t DbgTasksList(const char* target, uint32_t* words, uint32_t size) {
  const AllocationPause pause;
  if (size == 0) {
    if (const auto status = Record("DbgTasksList", target, Text("0"))) return status;
    const auto trueSize = static_cast<uint32_t>(4 * (1 + script->tasks.size()));
    if (script->storesSizes) *words = script->listSizeBytes.value_or(trueSize);
    script->listBuffer = nullptr;
    script->listNext = script->listFills = 0;
    return 0;
  }
  if (script && !script->listBuffer) script->listBuffer = words;
  const std::string offset = "+" + Text(script ? 4 * (words - script->listBuffer) : 0);
  if (const auto status = Record("DbgTasksList", target, offset, Text(size))) return status;
  script->FillList(words, size);
  return 0;
}

uint32_t DbgTaskGetName(const char* target, uint32_t task, char* name, uint32_t size) {
  const AllocationPause pause;
  if (const auto status = Record("DbgTaskGetName", target, Hex(task), Text(size))) return status;
  const ScriptedTask* found = script->FindTask(task);
  if (!found) return ScriptedTarget::noSuchTask;
  script->PutText(found->name, name, size);
  return 0;
}

uint32_t DbgTaskGetData(const char* target, uint32_t task, uint32_t item, void* data, uint32_t size) {
  const AllocationPause pause;
  if (const auto status = Record("DbgTaskGetData", target, Hex(task), Hex(item), Text(size))) return status;
  const ScriptedTask* found = script->FindTask(task);
  if (!found || size != 4) return ScriptedTarget::noSuchTask;
  const bool timeSlice = item == taskDataTimeSlice;
  std::memcpy(data, timeSlice ? static_cast<const void*>(&found->timeSlice) : &found->priorityData, 4);
  return 0;
}

uint32_t GetErrorDescription(const char* target, uint32_t status, char* text, uint32_t size) {
  if (const auto failed = Record("GetErrorDescription", target, Hex(status), Text(size))) return failed;
  const auto found = script->errorTexts.find(status);
  const std::string description =
      found == script->errorTexts.end() ? "scripted " + Hex(status) : found->second;
  if (size > 0) {
    script->PutText(description, text, size);
  } else if (script->storesSizes) {
    const auto needed = static_cast<uint32_t>(description.size() + 1);
    std::memcpy(text, &needed, sizeof needed);
  }
  return 0;
}
