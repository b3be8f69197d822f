// Large blocks of memory, as the system hands them out.
#pragma once

#include <cstddef>

#include "model/thresholds.h"

// The system hands out fresh memory page by page. For a log that is read once that costs as much as all the
// rest. A large page costs a quarter of the 512 small ones that it replaces, and a search in a large log
// waits less. A system without large pages gives small ones; nothing else changes.
inline constexpr std::size_t largePageSize = thresholds::largePage;  // bytes

// Sizes are multiples of the size of a large page. Null when there is no memory: what there was stays.
void* MapPages(std::size_t sizeBytes);
void* RemapPages(void* memory, std::size_t oldSize, std::size_t newSize);
void UnmapPages(void* memory, std::size_t sizeBytes);
// Whether RemapPages() moves without a copy. Where it does not, whoever knows a size had better ask for it at
// once: memory that is not used yet costs nothing, copies leave holes.
bool PagesMove();

// Asks for large pages in memory that is not used yet, wherever it comes from.
void PreferLargePages(void* memory, std::size_t sizeBytes);
