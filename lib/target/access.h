// The target-access library libquor_32.so.0: the eight functions through which everything crosses to a
// controller, and the two of its codes that this system interprets. The simulator implements the same
// declarations, so that a mismatch does not compile.
#pragma once

#include <cstdint>

extern "C" {

// Reads a variable. Size 0: a number, stored as an 8-byte double. Size n: text, NUL-terminated, in a
// buffer of n bytes.
uint32_t GetVariable(const char* target, const char* name, void* value, uint32_t size);

// Writes `size` bytes, for text its NUL included, to a variable.
uint32_t PutVariable(const char* target, const char* name, const void* data, uint32_t size);

// Calls a procedure; the name ends in "()".
uint32_t CallProcedure(const char* target, const char* name, double* result);

// Reads `count` words of the controller's memory, each as its numeric value.
uint32_t GetBlock32(const char* target, int64_t address, uint32_t* words, uint32_t count);

// Delivers the task list, in portions. Size 0: stores the size in bytes in words[0]. A header
// word comes first, then one identifier a task; discovery.cpp explains the portions.
uint32_t DbgTasksList(const char* target, uint32_t* words, uint32_t size);

// Reads the name of a task, NUL-terminated.
uint32_t DbgTaskGetName(const char* target, uint32_t task, char* name, uint32_t size);

// Reads one item of a task's data.
uint32_t DbgTaskGetData(const char* target, uint32_t task, uint32_t item, void* data, uint32_t size);

// Describes a status. Size 0: stores the size needed as a u32 in the first four bytes of `text`.
uint32_t GetErrorDescription(const char* target, uint32_t status, char* text, uint32_t size);
}

inline constexpr uint32_t noSuchVariable = 0x50201;
inline constexpr uint32_t noSuchProcedure = 0x50401;

// Items of DbgTaskGetData.
inline constexpr uint32_t taskDataTimeSlice = 0x80000002;  // signed 32-bit
inline constexpr uint32_t taskDataPriority = 1;            // in bits 16 to 23 of a 32-bit word
// Stands in the first word behind a portion of the task list when more is to come.
inline constexpr uint32_t taskListContinues = 0xFC847810;
