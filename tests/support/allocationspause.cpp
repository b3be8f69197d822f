// Stands before the functions of the scripted target, by --wrap: what they allocate is not the library's.
#include "support/allocations.h"
#include "target/access.h"

// The function that the library reaches under this name, and the scripted one behind it.
#define TASKLOG_TARGET_FUNCTION(name, parameters, arguments) \
  std::uint32_t __real_##name parameters;                    \
  std::uint32_t __wrap_##name parameters {                   \
    const AllocationPause pause;                             \
    return __real_##name arguments;                          \
  }

extern "C" {

TASKLOG_TARGET_FUNCTION(GetVariable, (const char* target, const char* name, void* value, std::uint32_t size),
                        (target, name, value, size))
TASKLOG_TARGET_FUNCTION(PutVariable,
                        (const char* target, const char* name, const void* data, std::uint32_t size),
                        (target, name, data, size))
TASKLOG_TARGET_FUNCTION(CallProcedure, (const char* target, const char* name, double* result),
                        (target, name, result))
TASKLOG_TARGET_FUNCTION(GetBlock32,
                        (const char* target, std::int64_t address, std::uint32_t* words, std::uint32_t count),
                        (target, address, words, count))
TASKLOG_TARGET_FUNCTION(DbgTasksList, (const char* target, std::uint32_t* words, std::uint32_t size),
                        (target, words, size))
TASKLOG_TARGET_FUNCTION(DbgTaskGetName,
                        (const char* target, std::uint32_t task, char* name, std::uint32_t size),
                        (target, task, name, size))
TASKLOG_TARGET_FUNCTION(DbgTaskGetData,
                        (const char* target, std::uint32_t task, std::uint32_t item, void* data,
                         std::uint32_t size),
                        (target, task, item, data, size))

}  // extern "C"
