// How a fuzz target says that something is wrong: by an exception that nothing catches, so that the fuzzer
// keeps the input.
#pragma once

#include <sstream>
#include <stdexcept>

namespace fuzz {

inline void Require(bool condition, const char* what) {
  if (!condition) throw std::logic_error(what);
}

template <class Value>
void RequireEqual(const char* what, const Value& library, const Value& model) {
  if (library == model) return;
  std::ostringstream text;
  text << what << ", by the library: " << library << ", by the model: " << model;
  throw std::logic_error(text.str());
}

}  // namespace fuzz
