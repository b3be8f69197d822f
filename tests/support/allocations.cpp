// Replaces the global operator new and delete, and stands before malloc and its kin: the program is linked
// with
// --wrap for each of them, which serves beside a sanitizer's own.
#include "support/allocations.h"

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

struct State {
  bool watching = false;
  std::size_t failing = 0;
  AllocationFault fault = AllocationFault::oneByNew;
  std::size_t count = 0;
  std::size_t largestBytes = 0;
};
State state;
std::size_t live = 0;

bool Fails(std::size_t sizeBytes, bool byNew) {
  if (!state.watching) return false;
  state.largestBytes = std::max(state.largestBytes, sizeBytes);
  if (state.fault == AllocationFault::oneByNew && !byNew) return false;
  ++state.count;
  if (state.fault != AllocationFault::allFromOne) return state.count == state.failing;
  return state.failing != 0 && state.count >= state.failing;
}

void* Counted(void* memory) {
  if (memory) ++live;
  return memory;
}

}  // namespace

AllocationWatch::AllocationWatch(std::size_t failing, AllocationFault fault) {
  state = {true, failing, fault, 0, 0};
}
AllocationWatch::~AllocationWatch() { state.watching = false; }
bool AllocationWatch::Failed() const { return state.failing != 0 && state.count >= state.failing; }
std::size_t AllocationWatch::LargestBytes() const { return state.largestBytes; }

AllocationPause::AllocationPause() : watching_(state.watching) { state.watching = false; }
AllocationPause::~AllocationPause() { state.watching = watching_; }

std::size_t LiveAllocations() { return live; }

extern "C" {

void* __real_malloc(std::size_t sizeBytes);
void* __real_calloc(std::size_t count, std::size_t sizeBytes);
void* __real_realloc(void* memory, std::size_t sizeBytes);
void __real_free(void* memory);

void* __wrap_malloc(std::size_t sizeBytes) {
  return Fails(sizeBytes, false) ? nullptr : Counted(__real_malloc(sizeBytes));
}

void* __wrap_calloc(std::size_t count, std::size_t sizeBytes) {
  return Fails(count * sizeBytes, false) ? nullptr : Counted(__real_calloc(count, sizeBytes));
}

void* __wrap_realloc(void* memory, std::size_t sizeBytes) {
  if (Fails(sizeBytes, false)) return nullptr;
  return memory ? __real_realloc(memory, sizeBytes) : Counted(__real_realloc(nullptr, sizeBytes));
}

void __wrap_free(void* memory) {
  if (memory) --live;
  __real_free(memory);
}

}  // extern "C"

void* operator new(std::size_t sizeBytes) {
  if (Fails(sizeBytes, true)) throw std::bad_alloc();
  if (void* memory = Counted(__real_malloc(std::max<std::size_t>(sizeBytes, 1)))) return memory;
  throw std::bad_alloc();
}

void* operator new(std::size_t sizeBytes, const std::nothrow_t&) noexcept {
  try {
    return operator new(sizeBytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
