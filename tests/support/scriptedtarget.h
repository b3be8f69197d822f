// A target-access library that follows a script: it answers from the tables that a test fills in, records
// every call as text, and fails where it is told to. A script is in force while it lives; not thread-safe.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

struct ScriptedTask {
  std::uint32_t id = 0;
  std::string name;
  std::int32_t timeSlice = 0;
  std::uint32_t priorityData = 0;  // what data item 1 gives; the priority stands in bits 16 to 23
};

struct ScriptedTarget {
  // Answers of this library's own; what else is missing is no such variable or procedure.
  static constexpr std::uint32_t noScript = 0x50001;
  static constexpr std::uint32_t badAddress = 0x50101;
  static constexpr std::uint32_t noSuchTask = 0x50102;

  ScriptedTarget();
  ~ScriptedTarget();
  ScriptedTarget(const ScriptedTarget&) = delete;
  ScriptedTarget& operator=(const ScriptedTarget&) = delete;

  // What the target has.
  std::map<std::string, double, std::less<>> numbers;         // by variable
  std::map<std::string, std::string, std::less<>> texts;      // by variable
  std::map<std::string, double> procedures;                   // results, by name with "()"
  std::map<std::int64_t, std::vector<std::uint32_t>> memory;  // by address
  std::vector<ScriptedTask> tasks;                            // in list order
  std::map<std::uint32_t, std::string> errorTexts;            // others read "scripted 0x50401"

  // What goes wrong, or changes.
  std::map<std::string, std::uint32_t> failures;         // by any part of a call's text
  std::map<std::size_t, std::uint32_t> failingCalls;     // by number of the call, from 1
  std::map<std::size_t, std::function<void()>> changes;  // done before the call of that number is answered
  std::optional<std::uint32_t> listSizeBytes;            // of the task list as reported, if not the true one
  std::size_t listPortions = SIZE_MAX;                   // the transfer of the task list stops after so many
  std::size_t listPortionWords = 120;  // of the task list that a transfer delivers, the header word apart
  bool terminatesTexts = true;         // false: fills text buffers to the last byte, without a NUL
  bool storesSizes = true;             // false: leaves the answer to a size query untouched

  // What was called, in order, with all arguments: "GetVariable(ctl, Target.Cpu, 10)".
  std::vector<std::string> calls;
  // The calls that begin like this, with "; " between.
  std::string CallsOf(const std::string& beginning = "") const;

  // For the functions in scriptedtarget.cpp.
  std::uint32_t Record(std::string call);  // gives the status with which the call is to fail, or 0
  void PutText(const std::string& text, char* buffer, std::uint32_t size) const;
  void FillList(std::uint32_t* words, std::uint32_t size);
  const ScriptedTask* FindTask(std::uint32_t id) const;

  ScriptedTarget* previous;                   // in force before this one
  const std::uint32_t* listBuffer = nullptr;  // where the transfer of the task list began
  std::size_t listNext = 0;                   // first word of the task list not yet delivered
  std::size_t listFills = 0;
};
