// What goes wrong, as the exceptions of tasklog.errors.
#pragma once

#include <pybind11/pybind11.h>

#include <stdexcept>

#include "cli/failure.h"

namespace python {

// A failure whose kind is known from what was being done.
class Failed : public std::runtime_error {
 public:
  Failed(const char* kind, const cli::Failure& failure)
      : runtime_error(failure.what()), kind_(kind), code_(failure.Status().Code()) {}
  const char* Kind() const { return kind_; }  // a class of tasklog.errors
  std::uint32_t Code() const { return code_; }

 private:
  const char* kind_;
  std::uint32_t code_;
};

// Does it, and calls a failure this.
template <class Work>
auto FailingAs(const char* kind, Work work) {
  try {
    return work();
  } catch (const cli::Failure& failure) {
    throw Failed(kind, failure);
  }
}

// From here on what the library and the command throw become those exceptions, with their text.
void TranslateFailures();

}  // namespace python
