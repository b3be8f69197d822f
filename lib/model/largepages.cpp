// Large pages of Linux. Blocks lie at multiples of the size of a large page, old place and new: elsewhere the
// system would take large pages apart to move them.
#include <sys/mman.h>

#include <cstdint>

#include "model/pages.h"

namespace {

std::size_t DistanceToLargePage(void* memory) {
  return -reinterpret_cast<std::uintptr_t>(memory) % largePageSize;
}

// Address space for a block; null when there is none.
void* Map(std::size_t sizeBytes, int protection) {
  const std::size_t mapped = sizeBytes + largePageSize;
  void* const memory = mmap(nullptr, mapped, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  const std::size_t before = DistanceToLargePage(memory);
  auto* const block = static_cast<char*>(memory) + before;
  if (before > 0) munmap(memory, before);
  munmap(block + sizeBytes, largePageSize - before);
  return block;
}

}  // namespace

void* MapPages(std::size_t sizeBytes) {
  void* const block = Map(sizeBytes, PROT_READ | PROT_WRITE);
  if (block) PreferLargePages(block, sizeBytes);
  return block;
}

void* RemapPages(void* memory, std::size_t oldSize, std::size_t newSize) {
  if (void* const same = mremap(memory, oldSize, newSize, 0); same != MAP_FAILED) return same;
  void* const place = Map(newSize, PROT_NONE);
  if (!place) return nullptr;
  void* const moved = mremap(memory, oldSize, newSize, MREMAP_MAYMOVE | MREMAP_FIXED, place);
  if (moved != MAP_FAILED) return moved;
  munmap(place, newSize);
  return nullptr;
}

void UnmapPages(void* memory, std::size_t sizeBytes) { munmap(memory, sizeBytes); }

bool PagesMove() { return true; }

void PreferLargePages(void* memory, std::size_t sizeBytes) {
  const std::size_t before = DistanceToLargePage(memory);
  if (sizeBytes < before + largePageSize) return;
  const std::size_t whole = (sizeBytes - before) / largePageSize * largePageSize;
  madvise(static_cast<char*>(memory) + before, whole, MADV_HUGEPAGE);
}
