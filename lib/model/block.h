// A block of memory that changes its size.
#pragma once

#include <cstddef>
#include <cstdlib>

#include "model/thresholds.h"

// For std::unique_ptr over memory from the C allocation functions.
struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

// The system hands out fresh memory page by page, which for a log that is read once costs as much as all the
// rest. A large page costs a quarter of the 512 small ones that it replaces, and a search in a large log
// waits less. A system without large pages gives small ones; nothing else changes.
inline constexpr std::size_t largePageSize = thresholds::largePage;  // bytes

// Asks for large pages in memory that is not used yet.
void PreferLargePages(void* memory, std::size_t sizeBytes);

// Small blocks come from malloc, those of several megabytes from the system, in large pages.
class Block {
 public:
  Block() = default;
  ~Block() { Resize(0); }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  void* Data() const { return data_; }
  std::size_t SizeBytes() const { return sizeBytes_; }
  // Makes the block at least this large, or gives back what it has beyond; the content stays as far as both
  // sizes reach, its place may change. False when there is no memory: the block is then as it was.
  bool Resize(std::size_t sizeBytes);

 private:
  bool MoveTo(void* fresh, std::size_t sizeBytes);

  void* data_ = nullptr;
  std::size_t sizeBytes_ = 0;
};
