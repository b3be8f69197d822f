// Large blocks lie at multiples of the size of a large page, old place and new: elsewhere the system would
// take large pages apart to move them.
#include "model/block.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

// Below, the end of a block in its last large page would weigh too much.
constexpr std::size_t smallestLarge = thresholds::smallestLarge;

// From an address, or a size, up to the next multiple of a large page.
std::size_t DistanceToLargePage(std::uintptr_t address) { return -address % largePageSize; }

// Address space for a large block; null when there is none.
void* Map(std::size_t sizeBytes, int protection) {
  const std::size_t mapped = sizeBytes + largePageSize;
  void* const memory = mmap(nullptr, mapped, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  const std::size_t before = DistanceToLargePage(reinterpret_cast<std::uintptr_t>(memory));
  auto* const block = static_cast<char*>(memory) + before;
  if (before > 0) munmap(memory, before);
  munmap(block + sizeBytes, largePageSize - before);
  return block;
}

void* MapFresh(std::size_t sizeBytes) {
  void* const block = Map(sizeBytes, PROT_READ | PROT_WRITE);
  if (block) PreferLargePages(block, sizeBytes);
  return block;
}

// Grows or shrinks a large block; null when there is no memory.
void* Remap(void* block, std::size_t oldSize, std::size_t newSize) {
  if (void* const same = mremap(block, oldSize, newSize, 0); same != MAP_FAILED) return same;
  void* const place = Map(newSize, PROT_NONE);
  if (!place) return nullptr;
  void* const moved = mremap(block, oldSize, newSize, MREMAP_MAYMOVE | MREMAP_FIXED, place);
  if (moved != MAP_FAILED) return moved;
  munmap(place, newSize);
  return nullptr;
}

void Release(void* block, std::size_t sizeBytes) {
  if (sizeBytes >= smallestLarge)
    munmap(block, sizeBytes);
  else
    std::free(block);
}

}  // namespace

void PreferLargePages(void* memory, std::size_t sizeBytes) {
  const std::size_t before = DistanceToLargePage(reinterpret_cast<std::uintptr_t>(memory));
  if (sizeBytes < before + largePageSize) return;
  const std::size_t whole = (sizeBytes - before) / largePageSize * largePageSize;
  madvise(static_cast<char*>(memory) + before, whole, MADV_HUGEPAGE);
}

bool Block::Resize(std::size_t sizeBytes) {
  if (sizeBytes > PTRDIFF_MAX / 2) return false;
  if (sizeBytes == 0) {
    Release(data_, sizeBytes_);
    data_ = nullptr;
    sizeBytes_ = 0;
    return true;
  }
  // A large block stays large for a while, so that one which grows and shrinks is not copied each time.
  const bool wasLarge = sizeBytes_ >= smallestLarge;
  const bool isLarge = sizeBytes >= (wasLarge ? smallestLarge / 2 : smallestLarge);
  if (isLarge) sizeBytes = std::max(sizeBytes + DistanceToLargePage(sizeBytes), smallestLarge);
  if (isLarge != wasLarge) return MoveTo(isLarge ? MapFresh(sizeBytes) : std::malloc(sizeBytes), sizeBytes);

  void* const data = isLarge ? Remap(data_, sizeBytes_, sizeBytes) : std::realloc(data_, sizeBytes);
  if (!data) return false;
  data_ = data;
  sizeBytes_ = sizeBytes;
  return true;
}

// Takes fresh memory over, if there is any, with the content.
bool Block::MoveTo(void* fresh, std::size_t sizeBytes) {
  if (!fresh) return false;
  if (data_) std::memcpy(fresh, data_, std::min(sizeBytes, sizeBytes_));
  Release(data_, sizeBytes_);
  data_ = fresh;
  sizeBytes_ = sizeBytes;
  return true;
}
