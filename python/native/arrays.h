// Memory of this side as numpy arrays.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace python {

// The vector moves into the array, which frees it; nothing is copied.
template <class Value>
pybind11::array_t<Value> ArrayOf(std::vector<Value>&& values) {
  auto kept = std::make_unique<std::vector<Value>>(std::move(values));
  Value* const data = kept->data();
  const auto count = static_cast<pybind11::ssize_t>(kept->size());
  const pybind11::capsule owner(kept.get(),
                                [](void* vector) { delete static_cast<std::vector<Value>*>(vector); });
  kept.release();
  return pybind11::array_t<Value>(count, data, owner);
}

// Flags, one byte each.
inline pybind11::array FlagsOf(std::vector<std::uint8_t>&& values) {
  return ArrayOf(std::move(values)).attr("view")("bool");
}

// Names may hold any bytes: what is no UTF-8 becomes a lone surrogate, as in names of files.
inline pybind11::str NameOf(const std::string& bytes) {
  PyObject* const name =
      PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "surrogateescape");
  if (!name) throw pybind11::error_already_set();
  return pybind11::reinterpret_steal<pybind11::str>(name);
}

// And back: a name as a caller gives it.
inline std::string BytesOf(const pybind11::handle& name) {
  return pybind11::cast<std::string>(name.attr("encode")("utf-8", "surrogateescape"));
}

}  // namespace python
