// How a fuzz target says that something is wrong: by an exception that nothing catches, so that the fuzzer
// keeps the input.
#pragma once

#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace fuzz {

inline void Require(bool condition, const char* what) {
  if (!condition) throw std::logic_error(what);
}

template <class Value>
void Show(std::ostream& out, const Value& value) {
  out << value;
}

template <class... Fields>
void Show(std::ostream& out, const std::tuple<Fields...>& row) {
  std::apply([&out](const auto&... field) { ((out << field << ' '), ...); }, row);
}

template <class Row>
void Show(std::ostream& out, const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    out << "\n  ";
    Show(out, row);
  }
}

template <class Value>
void RequireEqual(const char* what, const Value& library, const Value& model) {
  if (library == model) return;
  std::ostringstream text;
  text << what << ", by the library: ";
  Show(text, library);
  text << "\nby the model: ";
  Show(text, model);
  throw std::logic_error(text.str());
}

}  // namespace fuzz
