// Watches the allocations of a test program and makes them fail: those by operator new, and by malloc,
// calloc, realloc, mmap and mremap in what is linked into the program itself.
#pragma once

#include <cstddef>
#include <utility>

// Watches while it lives; one at a time. The allocations of the scripted target are passed over.
class AllocationWatch {
 public:
  // Number `failing` fails, counted from 1, and with `exhausted` all behind it; 0 fails none.
  explicit AllocationWatch(std::size_t failing = 0, bool exhausted = false);
  ~AllocationWatch();
  AllocationWatch(const AllocationWatch&) = delete;
  AllocationWatch& operator=(const AllocationWatch&) = delete;

  bool Failed() const;               // the allocation that was to fail was reached
  std::size_t LargestBytes() const;  // of a single request
};

// Whether an AllocationWatch counts what is allocated now.
inline bool allocationsWatched = false;

// Lets allocations pass that are not those of the code under test.
class AllocationPause {
 public:
  AllocationPause() : watched_(std::exchange(allocationsWatched, false)) {}
  ~AllocationPause() { allocationsWatched = watched_; }
  AllocationPause(const AllocationPause&) = delete;
  AllocationPause& operator=(const AllocationPause&) = delete;

 private:
  bool watched_;
};

// Blocks and mapped bytes that are allocated and not freed, by the program from its beginning on.
std::size_t LiveAllocations();
