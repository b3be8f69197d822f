#include "failures.h"

#include <string>
#include <string_view>

namespace py = pybind11;

namespace python {
namespace {

// Options of the command are named as it names them; arguments here have no dashes.
void Raise(const char* kind, std::string_view text, std::uint32_t code) {
  if (text.starts_with("--")) text.remove_prefix(2);
  const auto line = py::reinterpret_steal<py::str>(
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
  if (code == TLErrOutOfMemory) return PyErr_SetObject(PyExc_MemoryError, line.ptr());
  const py::object type = py::module_::import("tasklog.errors").attr(kind);
  const py::object error = code == TL_OK ? type(line) : type(line, code);
  PyErr_SetObject(type.ptr(), error.ptr());
}

}  // namespace

void TranslateFailures() {
  py::register_exception_translator([](std::exception_ptr thrown) {
    if (!thrown) return;
    try {
      std::rethrow_exception(thrown);
    } catch (const Failed& failed) {
      Raise(failed.Kind(), failed.what(), failed.Code());
    } catch (const cli::UsageError& error) {
      Raise("UsageError", error.what(), TL_OK);
    } catch (const cli::Failure& failure) {
      Raise("AnalysisError", failure.what(), failure.Status().Code());
    }
  });
}

}  // namespace python
