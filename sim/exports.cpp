// The eight functions of the target-access library. Each checks its arguments, lets the scenario's faults
// strike, and turns what is thrown inside into a status.

// The declarations carry no visibility, and this project compiles with everything hidden.
#pragma GCC visibility push(default)
#include "target/access.h"
#pragma GCC visibility pop

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>

#include "status.h"
#include "targets.h"

namespace sim {
namespace {

constexpr uint32_t wordBytes = 4;
// Identifiers in a portion of the task list; the first portion also carries the header word.
constexpr uint32_t portionIds = 120;

template <class Operation>
uint32_t Guarded(Operation operation) noexcept {
  try {
    try {
      operation();
      return 0;
    } catch (const Failure& failure) {
      RememberText(failure.status, failure.text);
      return failure.status;
    } catch (const std::bad_alloc&) {
      return outOfMemory;
    } catch (const std::exception& error) {
      RememberText(internalError, error.what());
      return internalError;
    }
  } catch (...) {  // not even the text found room
    return outOfMemory;
  }
}

void Require(bool condition, const char* expected) {
  if (!condition) throw Failure{badArgument, std::string("Bad argument: expected ") + expected};
}

Connection Reach(const char* target) {
  Require(target, "a target name");
  return Connect(target);
}

// Copies as much as fits, with a NUL.
void StoreText(const std::string& text, void* buffer, uint32_t size) {
  const size_t length = std::min(text.size(), size_t{size} - 1);
  std::memcpy(buffer, text.data(), length);
  static_cast<char*>(buffer)[length] = '\0';
}

void StoreValue(const Value& value, const std::string& name, void* buffer, uint32_t size) {
  const auto* number = std::get_if<double>(&value);
  if ((number != nullptr) != (size == 0)) {
    throw Failure{wrongType, "The variable '" + name + "' is a " + (number ? "number" : "text")};
  }
  if (!number) return StoreText(std::get<std::string>(value), buffer, size);
  std::memcpy(buffer, number, sizeof *number);
}

// The size that is left says how far the transfer has come; so nothing need be remembered between calls.
void StoreTaskPortion(const std::vector<uint32_t>& ids, uint32_t* words, uint32_t size) {
  const auto listBytes = static_cast<uint32_t>((ids.size() + 1) * wordBytes);
  const bool first = size >= listBytes;
  if (first) *words++ = static_cast<uint32_t>(ids.size());
  const size_t left = first ? ids.size() : size / wordBytes;
  const size_t done = ids.size() - left;
  Require(size % wordBytes == 0 && done % portionIds == 0 && (first || done > 0),
          "the size that is left of the task list");
  const size_t count = std::min<size_t>(left, portionIds);
  std::copy_n(ids.begin() + static_cast<ptrdiff_t>(done), count, words);
  if (left > count) words[count] = taskListContinues;
}

}  // namespace
}  // namespace sim

using namespace sim;

uint32_t GetVariable(const char* target, const char* name, void* value, uint32_t size) {
  return Guarded([&] {
    const Connection connection = Reach(target);
    Require(name && value, "a variable name and room for the value");
    connection.controller->Faults().Apply("GetVariable", name);
    StoreValue(connection.controller->GetVariable(connection.kernel, name), name, value, size);
  });
}

uint32_t PutVariable(const char* target, const char* name, const void* data, uint32_t size) {
  return Guarded([&] {
    const Connection connection = Reach(target);
    Require(name && data && size > 0, "a variable name and a text");
    connection.controller->Faults().Apply("PutVariable", name);
    const auto* text = static_cast<const char*>(data);
    connection.controller->PutText(name, std::string(text, std::find(text, text + size, '\0')));
  });
}

uint32_t CallProcedure(const char* target, const char* name, double* result) {
  return Guarded([&] {
    const Connection connection = Reach(target);
    Require(name && result, "a procedure name and room for the result");
    const auto injected = connection.controller->Faults().Apply("CallProcedure", name);
    *result = injected ? *injected : connection.controller->CallProcedure(name);
  });
}

uint32_t GetBlock32(const char* target, int64_t address, uint32_t* words, uint32_t count) {
  return Guarded([&] {
    const Connection connection = Reach(target);
    Require(words, "room for the words");
    connection.controller->Faults().Apply("GetBlock32", "");
    connection.controller->ReadMemory(address, words, count);
  });
}

uint32_t DbgTasksList(const char* target, uint32_t* words, uint32_t size) {
  return Guarded([&] {
    const Connection connection = Reach(target);
    Require(words, "room for the task list");
    connection.controller->Faults().Apply("DbgTasksList", "");
    const std::vector<uint32_t> ids = connection.controller->TaskIds(connection.kernel);
    if (size > 0) return StoreTaskPortion(ids, words, size);
    words[0] = static_cast<uint32_t>((ids.size() + 1) * wordBytes);
  });
}

uint32_t DbgTaskGetName(const char* target, uint32_t task, char* name, uint32_t size) {
  return Guarded([&] {
    const Connection connection = Reach(target);
    Require(name && size > 0, "room for the name");
    connection.controller->Faults().Apply("DbgTaskGetName", "");
    StoreText(connection.controller->TaskById(task).name, name, size);
  });
}

uint32_t DbgTaskGetData(const char* target, uint32_t task, uint32_t item, void* data, uint32_t size) {
  return Guarded([&] {
    const Connection connection = Reach(target);
    Require(data && size >= wordBytes, "room for four bytes");
    connection.controller->Faults().Apply("DbgTaskGetData", "");
    const Task& found = connection.controller->TaskById(task);
    if (item != taskDataTimeSlice && item != taskDataPriority) throw Failure{unknownTaskItem, {}};
    const auto sliceUs = static_cast<uint32_t>(found.sliceNs / 1000);
    const uint32_t word = item == taskDataTimeSlice ? sliceUs : uint32_t{found.priority} << 16;
    std::memcpy(data, &word, sizeof word);
  });
}

uint32_t GetErrorDescription(const char*, uint32_t status, char* text, uint32_t size) {
  return Guarded([&] {
    Require(text, "room for the text");
    const std::string description = TextOf(status);
    if (size > 0) return StoreText(description, text, size);
    const auto needed = static_cast<uint32_t>(description.size() + 1);
    std::memcpy(text, &needed, sizeof needed);
  });
}
