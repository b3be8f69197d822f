// The target-access library of the measuring programs.
#include "controller.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "schedule.h"
#include "target/access.h"

namespace bench {

Controller& TheController() {
  static Controller controller;
  return controller;
}

namespace {

constexpr double tickNanoseconds = 100;
constexpr std::uint32_t noSuchThing = 0x50000;

std::uint32_t Answer(void* value, double number) {
  std::memcpy(value, &number, sizeof number);
  return 0;
}

// The number behind a prefix, if the name has that prefix.
bool NumberBehind(std::string_view name, std::string_view prefix, std::uint32_t& number) {
  if (!name.starts_with(prefix)) return false;
  name.remove_prefix(prefix.size());
  return std::from_chars(name.data(), name.data() + name.size(), number).ec == std::errc();
}

}  // namespace
}  // namespace bench

using bench::TheController;

uint32_t GetVariable(const char*, const char* variable, void* value, uint32_t size) {
  const std::string_view name(variable);
  std::uint32_t index = 0;
  if (name == "Target.Mpu.Resolution") return bench::Answer(value, bench::tickNanoseconds);
  if (name.ends_with(".BufferSize"))
    return bench::Answer(value, 4.0 * static_cast<double>(TheController().ring.size()));
  if (name.ends_with(".BufferAddress")) return bench::Answer(value, 0x1000);
  if (name == "Watchpoint.Entity!Objects") return bench::Answer(value, bench::testpointCount);
  if (bench::NumberBehind(name, "Watchpoint.Entity!Object", index)) {
    std::snprintf(static_cast<char*>(value), size, "Point%u", index);
    return 0;
  }
  if (bench::NumberBehind(name, "Watchpoint.Entity.Point", index))
    return bench::Answer(value, bench::TestpointId(index));
  return noSuchVariable;
}

uint32_t PutVariable(const char*, const char*, const void*, uint32_t) { return noSuchVariable; }

uint32_t CallProcedure(const char*, const char*, double*) { return noSuchProcedure; }

uint32_t GetBlock32(const char*, int64_t, uint32_t* words, uint32_t count) {
  const auto& ring = TheController().ring;
  std::copy_n(ring.begin(), std::min<std::size_t>(count, ring.size()), words);
  return 0;
}

// All at once, which the protocol allows.
uint32_t DbgTasksList(const char*, uint32_t* words, uint32_t size) {
  const uint32_t count = TheController().taskCount;
  if (size == 0) {
    *words = 4 * (count + 1);
    return 0;
  }
  for (uint32_t i = 0; i < size / 4; ++i) words[i] = i == 0 ? 0 : bench::TaskId(i - 1);
  return 0;
}

uint32_t DbgTaskGetName(const char*, uint32_t task, char* name, uint32_t size) {
  std::snprintf(name, size, "Task%03u", (task - bench::TaskId(0)) / 64);
  return 0;
}

uint32_t DbgTaskGetData(const char*, uint32_t task, uint32_t item, void* data, uint32_t) {
  const uint32_t value = item == taskDataPriority ? (task / 64 % 8) << 16 : 10;
  std::memcpy(data, &value, sizeof value);
  return 0;
}

uint32_t GetErrorDescription(const char*, uint32_t, char*, uint32_t) { return bench::noSuchThing; }
