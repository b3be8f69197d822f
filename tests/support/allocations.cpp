// Replaces the global operator new and delete, and stands before malloc and its kin: the program is linked
// with --wrap for each of them, which serves beside a sanitizer's own.
#include "support/allocations.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "support/largefiles.h"

namespace {

struct State {
  std::size_t failing = 0;
  bool exhausted = false;
  std::size_t count = 0;
  std::size_t largestBytes = 0;
};
State state;
std::size_t live = 0;
std::size_t liveBytes = 0;  // mapped

bool Fails(std::size_t sizeBytes) {
  if (!allocationsWatched) return false;
  state.largestBytes = std::max(state.largestBytes, sizeBytes);
  ++state.count;
  return state.failing != 0 &&
         (state.exhausted ? state.count >= state.failing : state.count == state.failing);
}

void* Counted(void* memory) {
  if (memory) ++live;
  return memory;
}

}  // namespace

AllocationWatch::AllocationWatch(std::size_t failing, bool exhausted) {
  state = {failing, exhausted, 0, 0};
  allocationsWatched = true;
}
AllocationWatch::~AllocationWatch() { allocationsWatched = false; }
bool AllocationWatch::Failed() const { return state.failing != 0 && state.count >= state.failing; }
std::size_t AllocationWatch::LargestBytes() const { return state.largestBytes; }

std::size_t LiveAllocations() { return live + liveBytes; }

extern "C" {

void* __real_malloc(std::size_t sizeBytes);
void* __real_calloc(std::size_t count, std::size_t sizeBytes);
void* __real_realloc(void* memory, std::size_t sizeBytes);
void __real_free(void* memory);

void* TASKLOG_LARGE(__real_mmap)(void* address, std::size_t sizeBytes, int protection, int flags, int file,
                                 off_t offset);
void* __real_mremap(void* address, std::size_t oldBytes, std::size_t newBytes, int flags, ...);
int __real_munmap(void* address, std::size_t sizeBytes);

void* __wrap_malloc(std::size_t sizeBytes) {
  return Fails(sizeBytes) ? nullptr : Counted(__real_malloc(sizeBytes));
}

void* __wrap_calloc(std::size_t count, std::size_t sizeBytes) {
  return Fails(count * sizeBytes) ? nullptr : Counted(__real_calloc(count, sizeBytes));
}

void* __wrap_realloc(void* memory, std::size_t sizeBytes) {
  if (Fails(sizeBytes)) return nullptr;
  return memory ? __real_realloc(memory, sizeBytes) : Counted(__real_realloc(nullptr, sizeBytes));
}

void __wrap_free(void* memory) {
  if (memory) --live;
  __real_free(memory);
}

// Systems differ in where they map: each second time it is behind a multiple of the size of a large page.
void* TASKLOG_LARGE(__wrap_mmap)(void* address, std::size_t sizeBytes, int protection, int flags, int file,
                                 off_t offset) {
  constexpr std::size_t largePage = std::size_t{2} << 20, page = 4096;
  static bool behind = false;
  if (Fails(sizeBytes)) return MAP_FAILED;
  const std::size_t room = sizeBytes + 2 * largePage;
  auto* const begin =
      static_cast<char*>(TASKLOG_LARGE(__real_mmap)(address, room, protection, flags, file, offset));
  if (begin == MAP_FAILED) return MAP_FAILED;
  auto* memory =
      begin + -reinterpret_cast<std::uintptr_t>(begin) % largePage + ((behind = !behind) ? page : 0);
  if (memory != begin) __real_munmap(begin, static_cast<std::size_t>(memory - begin));
  __real_munmap(memory + sizeBytes, static_cast<std::size_t>(begin + room - memory) - sizeBytes);
  liveBytes += sizeBytes;
  return memory;
}

// Moved to a place, a block takes what was mapped there.
void* __wrap_mremap(void* address, std::size_t oldBytes, std::size_t newBytes, int flags, void* place) {
  if (Fails(newBytes)) return MAP_FAILED;
  void* memory = __real_mremap(address, oldBytes, newBytes, flags, place);
  if (memory != MAP_FAILED) liveBytes += (flags & MREMAP_FIXED ? 0 : newBytes) - oldBytes;
  return memory;
}

int __wrap_munmap(void* address, std::size_t sizeBytes) {
  liveBytes -= sizeBytes;
  return __real_munmap(address, sizeBytes);
}

}  // extern "C"

void* operator new(std::size_t sizeBytes) {
  if (Fails(sizeBytes)) throw std::bad_alloc();
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
