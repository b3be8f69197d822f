// How a fuzz target says that something is wrong: it ends the program, and the fuzzer keeps the input.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace fuzz {

[[noreturn]] inline void Fail(const std::string& what) {
  std::fprintf(stderr, "WRONG: %s\n", what.c_str());
  std::abort();
}

inline void Require(bool condition, const char* what) {
  if (!condition) Fail(what);
}

template <class Value>
void RequireEqual(const char* what, const Value& library, const Value& model) {
  if (library == model) return;
  std::ostringstream text;
  text.precision(17);
  text << what << ": " << library << " by the library, " << model << " by the model";
  Fail(text.str());
}

}  // namespace fuzz
