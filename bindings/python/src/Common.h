#ifndef DOVPYTHON_COMMON_H
#define DOVPYTHON_COMMON_H

// Pieces that the parts of the module share: how texts and paths cross
// between Python and the library, and the registration of each part.

#include <pybind11/pybind11.h>

#include <string>

namespace DovPython {

namespace py = pybind11;

// Names in a file are bytes; bytes that are no UTF-8 survive as surrogates
// and go back unchanged.
py::str Text(const std::string& bytes);
// A str, bytes or os.PathLike as the bytes the operating system sees.
std::string FileSystemPath(py::handle path);

// The one exception type of the module, dovwriter.Error, with its code,
// description and full text: set as the pending Python error, or raised.
void SetError(int code, const std::string& description, const std::string& text);
[[noreturn]] void RaiseError(int code, const std::string& description, const std::string& text);

void RegisterErrors(py::module_& module);
void RegisterScene(py::module_& module);
void RegisterReading(py::module_& module);

}  // namespace DovPython

#endif
