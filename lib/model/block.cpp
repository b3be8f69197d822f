// Small and large blocks.
#include "model/block.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "model/pages.h"
#include "model/thresholds.h"

namespace {

// Below, the end of a block in its last large page would weigh too much.
constexpr std::size_t smallestLarge = thresholds::smallestLarge;

void Release(void* block, std::size_t sizeBytes) {
  if (sizeBytes >= smallestLarge)
    UnmapPages(block, sizeBytes);
  else
    std::free(block);
}

}  // namespace

bool Block::Resize(std::size_t sizeBytes) {
  if (sizeBytes > PTRDIFF_MAX - smallestLarge) return false;
  if (sizeBytes == 0) {
    Release(data_, sizeBytes_);
    data_ = nullptr;
    sizeBytes_ = 0;
    return true;
  }
  // A large block stays large for a while, so that one which grows and shrinks is not copied each time.
  const bool wasLarge = sizeBytes_ >= smallestLarge;
  const bool isLarge = sizeBytes >= (wasLarge ? smallestLarge / 2 : smallestLarge);
  if (isLarge) sizeBytes = std::max(sizeBytes + -sizeBytes % largePageSize, smallestLarge);
  if (isLarge != wasLarge) return MoveTo(isLarge ? MapPages(sizeBytes) : std::malloc(sizeBytes), sizeBytes);

  void* const data = isLarge ? RemapPages(data_, sizeBytes_, sizeBytes) : std::realloc(data_, sizeBytes);
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
