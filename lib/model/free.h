// Owns memory that came from the C allocation functions.
#pragma once

#include <cstdlib>

// For std::unique_ptr.
struct Free {
  void operator()(void* memory) const { std::free(memory); }
};
