#include "BoundScene.h"

namespace DovPython {

namespace {

const std::uint64_t NoObject = ~std::uint64_t(0);

Element ElementOf(const py::array& values) {
  if (!(values.flags() & py::array::c_style))
    throw py::value_error("values must lie in C order, one tuple after the other");
  if (py::isinstance<py::array_t<float>>(values)) return Element::Float32;
  if (py::isinstance<py::array_t<std::uint32_t>>(values)) return Element::Uint32;
  throw py::type_error("the file holds float32 and uint32 values, not " +
                       std::string(py::str(values.dtype())));
}

template <class T>
void Store(Kel::Dov::Scene_V2& scene, const Identifier& array, const py::array& values,
           std::uint64_t count, bool lend) {
  const T* data = static_cast<const T*>(values.data());
  if (lend)
    scene.lendValues(array, data, count);
  else
    scene.setValues(array, data, count);
}

// A diagnostic record as Python sees it; the text is copied, since the
// record's own is valid during the call only.
struct DiagnosticEvent {
  Kel::Dov::Diagnostic kind;
  std::int32_t code;
  py::object object;
  std::string text;
  std::uint64_t done, total;
};

}  // namespace

BoundScene::BoundScene(const std::optional<std::string>& title)
    : scene(title ? title->c_str() : nullptr) {}

Identifier BoundScene::CreateObject(std::int32_t type) {
  const Identifier object = scene.createObject(static_cast<Kel::Dov::ObjectType>(type));
  roles.Add();
  sceneWord = object.first;
  return object;
}

void BoundScene::Validate(std::initializer_list<const Identifier*> objects) const {
  for (const Identifier* object : objects) scene.validate(*object);
}

void BoundScene::SaveTo(py::handle path, bool overwrite) {
  savedPath = FileSystemPath(path);
  scene.saveTo(savedPath.c_str(), nullptr, false, overwrite);
}

void BoundScene::CloseFile(py::handle path) {
  const std::string bytes = FileSystemPath(path);
  // The scene ignores a path it was not saved to; from Python that would
  // look like success with no file written.
  if (bytes != savedPath)
    throw py::value_error("close_file: the path is not the one given to save_to (" +
                          std::string(py::repr(Text(savedPath))) + "); nothing was written");
  scene.closeFile(bytes.c_str());
  lent.clear();
}

void BoundScene::SetDimension(const Identifier& array, int dimension) {
  if (dimension < 0 || dimension > 255) throw py::value_error("a Dimension lies in 0..255");
  scene.setDimension(array, static_cast<unsigned char>(dimension));
  roles[array.second].dimension = dimension;
}

std::uint64_t BoundScene::TupleCount(const Identifier& array, const py::array& values) {
  ObjectFacts& facts = roles[array.second];
  if (values.ndim() == 2) {
    const py::ssize_t width = values.shape(1);
    if (facts.dimension < 0)
      SetDimension(array, static_cast<int>(width));
    else if (facts.dimension != width)
      throw py::value_error("rows of " + std::to_string(width) +
                            " values, while the object's "
                            "Dimension is " +
                            std::to_string(facts.dimension));
    return static_cast<std::uint64_t>(values.shape(0));
  }
  if (values.ndim() != 1)
    throw py::value_error("values are a 1-D array or a 2-D array of one row per tuple");
  const py::ssize_t width = facts.dimension < 0 ? 1 : facts.dimension;
  if (width == 0 ? values.size() != 0 : values.size() % width != 0)
    throw py::value_error(std::to_string(values.size()) +
                          " values are no whole number of "
                          "tuples of the object's Dimension " +
                          std::to_string(width));
  return width == 0 ? 0 : static_cast<std::uint64_t>(values.size() / width);
}

void BoundScene::SetValues(const Identifier& array, const py::array& values, bool lend) {
  scene.validate(array);
  const Element element = ElementOf(values);
  roles.CheckElement(array.second, element);
  const std::uint64_t count = TupleCount(array, values);
  if (element == Element::Float32)
    Store<float>(scene, array, values, count, lend);
  else
    Store<unsigned int>(scene, array, values, count, lend);
  roles[array.second].stored = element;
  if (lend) lent.push_back(values);
}

std::string BoundScene::Takes(const Identifier& array) {
  scene.validate(array);
  return roles.Takes(array.second);
}

void BoundScene::SetDiagnostics(py::object handler) {
  if (!handler.is_none() && !PyCallable_Check(handler.ptr()))
    throw py::type_error("set_diagnostics takes a callable or None");
  diagnostics = handler;
  scene.setDiagnostics(handler.is_none() ? nullptr : &BoundScene::Forward, this);
}

// Runs on the thread of the scene's call, which holds the GIL. An exception
// of the handler leaves through the scene's call, which the scene allows,
// and reaches Python from there.
void BoundScene::Forward(const Kel::Dov::DiagnosticRecord& record, void* user) {
  BoundScene& self = *static_cast<BoundScene*>(user);
  py::object object = py::none();
  if (record.object != NoObject) object = py::cast(Identifier{self.sceneWord, record.object});
  self.diagnostics(DiagnosticEvent{record.kind, record.code, object, record.text ? record.text : "",
                                   record.done, record.total});
}

void RegisterDiagnosticEvent(py::module_& module) {
  py::enum_<Kel::Dov::Diagnostic>(module, "Diagnostic")
      .value("Progress", Kel::Dov::Diagnostic::Progress)
      .value("Warning", Kel::Dov::Diagnostic::Warning);
  py::class_<DiagnosticEvent>(module, "DiagnosticRecord",
                              "What a scene reports to the handler of set_diagnostics.")
      .def_readonly("kind", &DiagnosticEvent::kind, "Diagnostic.Progress or Diagnostic.Warning")
      .def_readonly("code", &DiagnosticEvent::code, "the kind of warning; 0 for progress")
      .def_readonly("object", &DiagnosticEvent::object, "the Identifier concerned, or None")
      .def_readonly("text", &DiagnosticEvent::text, "one readable sentence")
      .def_readonly("done", &DiagnosticEvent::done, "progress: bytes of numbers written")
      .def_readonly("total", &DiagnosticEvent::total, "progress: bytes expected in all");
}

}  // namespace DovPython
