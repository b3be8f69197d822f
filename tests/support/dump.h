// Logs as text, so that a test compares a whole one with what it writes by hand. Only the exported functions
// are used.
#pragma once

#include <tasklog/tasklog.h>

#include <memory>
#include <string>
#include <type_traits>

inline constexpr std::uint64_t anyType = UINT64_MAX;  // types 8 to 14 included

// "1000 4 Idle Ctrl": time, type, slots 0 and 1; "-" stands for an empty slot.
std::string EntryText(TLEntry entry);

// The entries that a query yields, with "; " between.
std::string DumpEntries(TLTaskLog log, TLCategory category = nullptr, std::uint64_t types = anyType,
                        std::uint64_t from = 0, std::uint64_t to = UINT64_MAX);

// The same of categories: "task Idle 0 10 id 1" (priority, time slice), "testpoint TP1 id 9", "issue STKO id
// 5".
std::string DumpCategories(TLTaskLog log, std::uint64_t types = 0, const char* name = nullptr);

// "1000 5000 1000000": start, stop, ticks per second.
std::string DumpTimes(TLTaskLog log);

// The only category of a name; null when there is none or several.
TLCategory CategoryNamed(TLTaskLog log, const char* name);

// How many pieces, with "; " between, a dump has.
std::size_t CountIn(const std::string& dump);

struct DestroyLog {
  void operator()(TLTaskLog log) const { TLTaskLogDestroy(log); }
};
using LogPtr = std::unique_ptr<std::remove_pointer_t<TLTaskLog>, DestroyLog>;
LogPtr NewLog();
