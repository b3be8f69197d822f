// A block of memory that changes its size.
#pragma once

#include <cstddef>
#include <cstdlib>

// For std::unique_ptr over memory from the C allocation functions.
struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

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
