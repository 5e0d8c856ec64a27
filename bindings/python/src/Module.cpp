// The compiled core of the dovwriter package: writing through Scene_V2,
// reading through our reader. The package's Python code gives it its final
// shape (numpy conversions, lookups by name and instance value).

#include <DovWriter/DovWriter.h>

#include "Cli.h"
#include "Common.h"
#include "reader/Container.h"

namespace DovPython {

namespace {

// A reader failure has no code of its own; it is the library's "Read Error".
const int ReadErrorCode = 9;

// Held for the life of the process: a static py::object would let go of
// it after the interpreter has ended.
PyObject* errorType = nullptr;

}  // namespace

py::str Text(const std::string& bytes) {
  PyObject* text =
      PyUnicode_DecodeUTF8(bytes.data(), static_cast<Py_ssize_t>(bytes.size()), "surrogateescape");
  if (text == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(text);
}

std::string FileSystemPath(py::handle path) {
  return py::module_::import("os").attr("fsencode")(path).cast<std::string>();
}

void SetError(int code, const std::string& description, const std::string& text) {
  py::object error = py::reinterpret_borrow<py::object>(errorType)(text);
  error.attr("code") = code;
  error.attr("description") = description;
  error.attr("text") = text;
  PyErr_SetObject(errorType, error.ptr());
}

void RaiseError(int code, const std::string& description, const std::string& text) {
  SetError(code, description, text);
  throw py::error_already_set();
}

void RegisterErrors(py::module_& module) {
  errorType = PyErr_NewExceptionWithDoc(
      "dovwriter.Error",
      "A failure of the library or of reading a file: .code (the library's error code; 9 for a\n"
      "file that cannot be read), .description (one line) and .text (the full report, also\n"
      "str(error)).",
      PyExc_Exception, nullptr);
  if (errorType == nullptr) throw py::error_already_set();
  module.attr("Error") = py::reinterpret_borrow<py::object>(errorType);
  py::register_exception_translator([](std::exception_ptr failure) {
    try {
      if (failure) std::rethrow_exception(failure);
    } catch (const Kel::Util::Exception& e) {
      SetError(e.GetCode(), e.GetDescription(), e.what());
    } catch (const DovReader::ReadError& e) {
      SetError(ReadErrorCode, e.what(), e.what());
    } catch (const DovInspect::ToolError& e) {
      SetError(ReadErrorCode, e.what(), e.what());
    }
  });
}

}  // namespace DovPython

PYBIND11_MODULE(_core, module) {
  module.doc() = "Compiled core of dovwriter; use the dovwriter package.";
  DovPython::RegisterErrors(module);
  DovPython::RegisterScene(module);
  DovPython::RegisterReading(module);
}
