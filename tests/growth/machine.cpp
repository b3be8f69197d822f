#include "growth/machine.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "schedule.h"
#include "target/access.h"

using growth::TheMachine;

namespace {

std::uint32_t nextAddress = 0;  // of the testpoint that is asked for next

std::uint32_t IndexOf(std::uint32_t task) { return (task - bench::TaskId(0)) / 64; }

std::uint32_t Answer(void* value, double number) {
  std::memcpy(value, &number, sizeof number);
  return 0;
}

std::uint32_t AnswerName(std::uint32_t index, void* text, std::uint32_t size) {
  std::snprintf(static_cast<char*>(text), size, "%s", TheMachine().nameOf(index).c_str());
  return 0;
}

}  // namespace

growth::Machine& growth::TheMachine() {
  static Machine machine;
  return machine;
}

uint32_t GetVariable(const char*, const char* variable, void* value, uint32_t size) {
  constexpr std::string_view object = "Watchpoint.Entity!Object";
  const std::string_view name(variable);
  if (name == "Target.Mpu.Resolution") return Answer(value, 100);
  if (name.ends_with(".BufferSize"))
    return Answer(value, 4.0 * static_cast<double>(TheMachine().ring.size()));
  if (name.ends_with(".BufferAddress")) return Answer(value, 0x1000);
  if (name.ends_with(".Address")) return Answer(value, bench::TestpointId(nextAddress++));
  if (!name.starts_with(object)) return noSuchVariable;
  if (name.size() > object.size() && name[object.size()] != 's')
    return AnswerName(static_cast<uint32_t>(std::atoi(variable + object.size())), value, size);
  nextAddress = 0;
  return Answer(value, TheMachine().testpointCount);
}

uint32_t PutVariable(const char*, const char*, const void*, uint32_t) { return noSuchVariable; }

uint32_t CallProcedure(const char*, const char*, double*) { return noSuchProcedure; }

uint32_t GetBlock32(const char*, int64_t, uint32_t* words, uint32_t count) {
  std::copy_n(TheMachine().ring.begin(), count, words);
  return 0;
}

// All at once, which the protocol allows.
uint32_t DbgTasksList(const char*, uint32_t* words, uint32_t size) {
  if (size == 0) *words = 4 * (TheMachine().taskCount + 1);
  for (uint32_t i = 0; i < size / 4; ++i) words[i] = i == 0 ? 0 : bench::TaskId(i - 1);
  return 0;
}

uint32_t DbgTaskGetName(const char*, uint32_t task, char* name, uint32_t size) {
  return AnswerName(IndexOf(task), name, size);
}

// As placeholders have them, so that a task may be taken for one.
uint32_t DbgTaskGetData(const char*, uint32_t task, uint32_t item, void* data, uint32_t) {
  const uint32_t slice = TheMachine().slicesDiffer ? IndexOf(task) : UINT32_MAX;
  const uint32_t value = item == taskDataPriority ? 7u << 16 : slice;
  std::memcpy(data, &value, sizeof value);
  return 0;
}

uint32_t GetErrorDescription(const char*, uint32_t, char*, uint32_t) { return noSuchVariable; }
