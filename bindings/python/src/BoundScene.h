#ifndef DOVPYTHON_BOUNDSCENE_H
#define DOVPYTHON_BOUNDSCENE_H

// A Scene_V2 as Python holds it: the scene, what the module knows of its
// objects (ObjectRoles), the arrays lent to it, and the Python callable
// that receives its diagnostics. The operations that only forward to the
// scene are bound directly; those that check, convert or keep something
// live here.

#include <DovWriter/DovWriter.h>
#include <pybind11/numpy.h>

#include <optional>
#include <string>
#include <vector>

#include "Common.h"
#include "ObjectRoles.h"

namespace DovPython {

using Kel::Dov::Identifier;

class BoundScene {
 public:
  explicit BoundScene(const std::optional<std::string>& title);

  Identifier CreateObject(std::int32_t type);
  // Validates each identifier in turn, as the scene's own calls do.
  void Validate(std::initializer_list<const Identifier*> objects) const;

  void SaveTo(py::handle path, bool overwrite);
  void CloseFile(py::handle path);

  void SetDimension(const Identifier& array, int dimension);
  // Values of float32 or uint32 in C order, 1-D or one row per tuple.
  void SetValues(const Identifier& array, const py::array& values, bool lend);
  std::string Takes(const Identifier& array);

  struct Binding {
    const Identifier& array;
    Role role;
  };
  // The frame of every call that binds arrays: validates the identifiers in
  // argument order, checks that each array can serve in its role, runs
  // `call`, then notes the roles and the Dimension that the call set on the
  // arrays (none if negative).
  template <class Call>
  void Bind(std::initializer_list<const Identifier*> arguments,
            std::initializer_list<Binding> arrays, int dimension, Call call) {
    Validate(arguments);
    for (const Binding& binding : arrays) roles.Admit(binding.array.second, binding.role);
    call();
    for (const Binding& binding : arrays) {
      roles[binding.array.second].roles |= binding.role;
      if (dimension >= 0) roles[binding.array.second].dimension = dimension;
    }
  }

  void SetDiagnostics(py::object handler);

  // Hands a Python int, float or str to `call` as the element type that
  // the scene's templates take for it.
  template <class Call>
  static void WithValue(py::handle value, Call call);

  Kel::Dov::Scene_V2& Scene() { return scene; }

 private:
  static void Forward(const Kel::Dov::DiagnosticRecord& record, void* user);
  std::uint64_t TupleCount(const Identifier& array, const py::array& values);

  // Declared before the scene, so that they outlive it: the scene may read
  // lent arrays until it is gone.
  std::vector<py::object> lent;
  py::object diagnostics;
  ObjectRoles roles;
  std::string savedPath;
  std::uint64_t sceneWord = 0;
  Kel::Dov::Scene_V2 scene;
};

// An integer that fits 64 bits (signed, else unsigned), a float, or a text.
template <class Call>
void BoundScene::WithValue(py::handle value, Call call) {
  if (py::isinstance<py::str>(value) || py::isinstance<py::bytes>(value)) {
    const std::string text = value.cast<std::string>();
    call(text.c_str());
  } else if (PyIndex_Check(value.ptr())) {
    const py::object number = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
    if (!number) throw py::error_already_set();
    int overflow = 0;
    const long long small = PyLong_AsLongLongAndOverflow(number.ptr(), &overflow);
    if (overflow == 0) {
      call(small);
      return;
    }
    const unsigned long long large = PyLong_AsUnsignedLongLong(number.ptr());
    if (PyErr_Occurred()) throw py::error_already_set();  // OverflowError, beyond 64 bits
    call(large);
  } else if (PyFloat_Check(value.ptr()) ||
             py::isinstance(value, py::module_::import("numpy").attr("floating"))) {
    call(value.cast<double>());
  } else {
    throw py::type_error("a value is an int, a float or a str, not " +
                         std::string(py::str(py::type::of(value).attr("__name__"))));
  }
}

// The Diagnostic enumeration and the record a handler receives.
void RegisterDiagnosticEvent(py::module_& module);

}  // namespace DovPython

#endif
