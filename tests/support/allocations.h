// Watches the allocations of a test program and makes them fail: those by operator new, and by malloc, calloc
// and realloc in what is linked into the program itself.
#pragma once

#include <cstddef>

// Which allocation is number n, and which fail with it.
enum class AllocationFault {
  oneByNew,   // the n-th by operator new alone
  one,        // the n-th of any kind
  allFromOne  // the n-th of any kind and all behind it: memory is exhausted and stays so
};

// Watches while it lives; one at a time. The allocations of the scripted target are passed over.
class AllocationWatch {
 public:
  // Number `failing` fails, counted from 1; 0 fails none.
  explicit AllocationWatch(std::size_t failing = 0, AllocationFault fault = AllocationFault::oneByNew);
  ~AllocationWatch();
  AllocationWatch(const AllocationWatch&) = delete;
  AllocationWatch& operator=(const AllocationWatch&) = delete;

  bool Failed() const;               // the allocation that was to fail was reached
  std::size_t LargestBytes() const;  // of a single request
};

// Lets allocations pass that are not those of the code under test.
class AllocationPause {
 public:
  AllocationPause();
  ~AllocationPause();
  AllocationPause(const AllocationPause&) = delete;
  AllocationPause& operator=(const AllocationPause&) = delete;

 private:
  bool watching_;
};

// Blocks that are allocated and not freed, by the program from its beginning on.
std::size_t LiveAllocations();
