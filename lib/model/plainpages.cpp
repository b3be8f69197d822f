// In place of largepages.cpp where the system moves no pages.
#include <cstdlib>

#include "model/pages.h"

void* MapPages(std::size_t sizeBytes) { return std::malloc(sizeBytes); }

void* RemapPages(void* memory, std::size_t, std::size_t newSize) { return std::realloc(memory, newSize); }

void UnmapPages(void* memory, std::size_t) { std::free(memory); }

bool PagesMove() { return false; }

void PreferLargePages(void*, std::size_t) {}
