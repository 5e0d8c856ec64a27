// dovwriter's Scene: every operation of Scene_V2 under its snake_case name.
// Identifiers are a small Python type, instance values and property values
// are Python ints, floats or texts, and arrays are numpy arrays of float32
// or uint32 (the package converts others where nothing is lost).

#include <pybind11/stl.h>

#include "BoundScene.h"

namespace DovPython {

namespace {

using namespace pybind11::literals;
using Id = const Identifier&;
using Kel::Dov::ColorType;
using Kel::Dov::MeshType;
using Kel::Dov::VariableType;

// The width that setResult with a variable type gives the array.
int WidthOf(std::int32_t type) { return type == 1 ? 3 : type == 2 || type == 3 ? 6 : 1; }

// Operations that are valid but put nothing into the file.
void WarnNotWritten(const char* text) {
  if (PyErr_WarnEx(PyExc_UserWarning, text, 1) < 0) throw py::error_already_set();
}

void RegisterTypes(py::module_& module) {
  py::class_<Identifier>(module, "Identifier",
                         "Names one object of one scene; made by Scene.create_object.")
      .def_property_readonly(
          "index", [](Id id) { return id.second; }, "the object's index in its scene, from 0")
      .def(
          "__eq__", [](Id a, Id b) { return a.first == b.first && a.second == b.second; },
          py::is_operator())
      .def("__hash__", [](Id id) { return py::hash(py::make_tuple(id.first, id.second)); })
      .def("__repr__", [](Id id) { return "<Identifier " + std::to_string(id.second) + ">"; });
  py::enum_<Kel::Dov::ObjectType>(module, "ObjectType", py::arithmetic())
      .value("ArrayObject", Kel::Dov::ArrayObject)
      .value("MaterialObject", Kel::Dov::MaterialObject)
      .value("TransformationObject", Kel::Dov::TransformationObject)
      .value("ElementSetObject", Kel::Dov::ElementSetObject)
      .value("InstanceGroupObject", Kel::Dov::InstanceGroupObject)
      .value("GeometryObject", Kel::Dov::GeometryObject)
      .value("ShapeObject", Kel::Dov::ShapeObject)
      .value("GroupObject", Kel::Dov::GroupObject)
      .value("MeshObject", Kel::Dov::MeshObject)
      .export_values();
  py::enum_<ColorType>(module, "ColorType", py::arithmetic())
      .value("DiffusiveColor", Kel::Dov::DiffusiveColor)
      .value("SpecularColor", Kel::Dov::SpecularColor)
      .value("EmissiveColor", Kel::Dov::EmissiveColor)
      .value("AmbientColor", Kel::Dov::AmbientColor)
      .export_values();
  py::enum_<MeshType>(module, "MeshType", py::arithmetic())
      .value("CellMesh", Kel::Dov::CellMesh)
      .value("LineMesh", Kel::Dov::LineMesh)
      .value("PointMesh", Kel::Dov::PointMesh)
      .export_values();
  py::enum_<VariableType>(module, "VariableType", py::arithmetic())
      .value("ScalarVariable", Kel::Dov::ScalarVariable)
      .value("VectorVariable", Kel::Dov::VectorVariable)
      .value("SixComponentVariableA", Kel::Dov::SixComponentVariableA)
      .value("SixComponentVariableB", Kel::Dov::SixComponentVariableB)
      .export_values();
  py::enum_<Kel::Dov::Encoding>(module, "Encoding")
      .value("Exact", Kel::Dov::Encoding::Exact)
      .value("Fast", Kel::Dov::Encoding::Fast);
  RegisterDiagnosticEvent(module);
}

void DefineObjects(py::class_<BoundScene>& scene) {
  scene
      .def(py::init<const std::optional<std::string>&>(), "title"_a = py::none(),
           "A new scene; the title does not reach the file.")
      .def("create_object", &BoundScene::CreateObject, "type"_a,
           "A new object of an ObjectType (any 32-bit value); returns its Identifier.")
      .def(
          "get_type", [](BoundScene& s, Id object) { return int(s.Scene().getType(object)); },
          "object"_a, "The object's type as given to create_object.")
      .def(
          "get_name", [](BoundScene& s, Id object) { return Text(s.Scene().getName(object)); },
          "object"_a, "The object's name.")
      .def(
          "set_name",
          [](BoundScene& s, Id object, const std::string& name) {
            s.Scene().setName(object, name.c_str());
          },
          "object"_a, "name"_a, "Names an object.")
      .def(
          "set_title",
          [](BoundScene& s, const std::string& title) { s.Scene().setTitle(title.c_str()); },
          "title"_a, "Sets the scene's title.")
      .def(
          "set_title",
          [](BoundScene& s, Id object, const std::string& name) {
            s.Scene().setTitle(object, name.c_str());
          },
          "object"_a, "name"_a, "Names an object (the same as set_name).")
      .def(
          "validate", [](BoundScene& s, Id object) { s.Scene().validate(object); }, "object"_a,
          "Raises Error (code 8) unless the identifier names an object of this scene.")
      .def(
          "set_property",
          [](BoundScene& s, Id object, const std::string& key, py::handle value) {
            BoundScene::WithValue(value,
                                  [&](auto v) { s.Scene().setProperty(object, key.c_str(), v); });
          },
          "object"_a, "key"_a, "value"_a,
          "Stores the text of an int, float or str as an attribute under the key.")
      .def(
          "create_default_views",
          [](BoundScene& s, Id root) { s.Scene().createDefaultViews(root); }, "root"_a,
          "Names the root object, from which close_file builds the tree.")
      .def("save_to", &BoundScene::SaveTo, "path"_a, "overwrite"_a = false,
           "Opens the model file and writes its head. An existing file is an Error (code 10)\n"
           "unless overwrite is true.")
      .def("close_file", &BoundScene::CloseFile, "path"_a,
           "Builds the scene and finishes the file given to save_to. Another path is a\n"
           "ValueError here (the library would do nothing). Arrays lent to the scene are\n"
           "let go once it returns.")
      .def(
          "set_application_info",
          [](BoundScene& s, const std::string& name, py::handle value) {
            BoundScene::WithValue(value,
                                  [&](auto v) { s.Scene().setApplicationInfo(name.c_str(), v); });
          },
          "name"_a, "version"_a, "Names the application and its version in the file.")
      .def(
          "set_write_options",
          [](BoundScene& s, unsigned threads, Kel::Dov::Encoding encoding, int level,
             std::uint32_t blockBytes) {
            s.Scene().setWriteOptions({threads, encoding, level, blockBytes});
          },
          "threads"_a = 1, "encoding"_a = Kel::Dov::Encoding::Exact, "level"_a = 6,
          "block_bytes"_a = 0,
          "How the file is written: threads (0: one per hardware thread), Encoding.Exact\n"
          "(the same bytes whatever the threads) or Encoding.Fast with its level 1..12 and\n"
          "block size (0: the library's choice). Before close_file.")
      .def("set_diagnostics", &BoundScene::SetDiagnostics, "handler"_a,
           "Calls handler(record) with each DiagnosticRecord (warnings, progress); None turns\n"
           "it off. An exception of the handler leaves the call that made the record.");
}

void DefineArrays(py::class_<BoundScene>& scene) {
  scene
      .def("set_dimension", &BoundScene::SetDimension, "array"_a, "dimension"_a,
           "Sets the number of values per tuple (0..255) of an array object.")
      .def(
          "set_values",
          [](BoundScene& s, Id array, const py::array& values) {
            s.SetValues(array, values, false);
          },
          "array"_a, "values"_a, "Copies float32 or uint32 values into an array object.")
      .def(
          "lend_values",
          [](BoundScene& s, Id array, const py::array& values) {
            s.SetValues(array, values, true);
          },
          "array"_a, "values"_a,
          "Like set_values, but the scene reads the array itself, kept alive until close_file.")
      .def("_takes", &BoundScene::Takes, "array"_a,
           "What the array object's roles take: 'float32', 'uint32' or 'any'.");
}

void DefineAppearance(py::class_<BoundScene>& scene) {
  scene
      .def(
          "set_color",
          [](BoundScene& s, Id object, std::int32_t type, float red, float green, float blue,
             float alpha) { s.Scene().setColor(object, ColorType(type), red, green, blue, alpha); },
          "object"_a, "color_type"_a, "red"_a, "green"_a, "blue"_a, "alpha"_a = 1.0f,
          "Sets a colour (ColorType) of a material or element set object.")
      .def(
          "set_color",
          [](BoundScene& s, Id object, std::int32_t type, std::vector<float> rgba) {
            if (rgba.size() != 3 && rgba.size() != 4)
              throw py::value_error("a colour has 3 or 4 components");
            s.Scene().setColor(object, ColorType(type), rgba.data(), rgba.size() == 4);
          },
          "object"_a, "color_type"_a, "rgba"_a, "Sets a colour from 3 components (alpha 1) or 4.")
      .def(
          "set_ambient_intensity",
          [](BoundScene& s, Id object, float intensity) {
            s.Scene().setAmbientIntensity(object, intensity);
          },
          "object"_a, "intensity"_a, "Sets the ambient intensity of an element set object.")
      .def(
          "set_translation",
          [](BoundScene& s, Id object, float x, float y, float z) {
            s.Scene().setTranslation(object, x, y, z);
          },
          "object"_a, "x"_a, "y"_a, "z"_a, "Sets the translation of a transformation object.")
      .def(
          "set_rotation",
          [](BoundScene& s, Id object, float a, float b, float c, float d) {
            s.Scene().setRotation(object, a, b, c, d);
          },
          "object"_a, "a"_a, "b"_a, "c"_a, "d"_a,
          "Sets the four rotation numbers of a transformation object.")
      .def(
          "set_scale",
          [](BoundScene& s, Id object, float x, float y, float z) {
            s.Scene().setScale(object, x, y, z);
          },
          "object"_a, "x"_a, "y"_a, "z"_a, "Sets the scale of a transformation object.")
      .def(
          "set_visibility",
          [](BoundScene& s, Id object, bool visible) { s.Scene().setVisibility(object, visible); },
          "object"_a, "visible"_a, "Shows or hides a group, shape or element set object.")
      .def(
          "set_mesh_type",
          [](BoundScene& s, Id object, std::int32_t type) {
            s.Scene().setMeshType(object, MeshType(type));
          },
          "object"_a, "mesh_type"_a, "Sets the MeshType of a geometry object.")
      .def(
          "set_random_colors", [](BoundScene& s, Id object) { s.Scene().setRandomColors(object); },
          "object"_a, "Validates the object; every shape gets a random colour anyway.");
}

// The per-value forms take the instance value as a Python int, float or
// text and hand it on in the C++ type that the scene's templates take.
void DefineMeshData(py::class_<BoundScene>& scene) {
  scene
      .def(
          "set_coordinates",
          [](BoundScene& s, Id mesh, Id array) {
            s.Bind({&mesh, &array}, {{array, CoordinatesRole}}, -1,
                   [&] { s.Scene().setCoordinates(mesh, array); });
          },
          "mesh"_a, "array"_a, "Binds float32 coordinates, three per node, to a mesh.")
      .def(
          "set_coordinates",
          [](BoundScene& s, Id mesh, Id group, py::handle value, Id array) {
            s.Bind({&mesh, &group, &array}, {{array, CoordinatesRole}}, 3, [&] {
              BoundScene::WithValue(
                  value, [&](auto v) { s.Scene().setCoordinates(mesh, group, v, array); });
            });
          },
          "mesh"_a, "group"_a, "value"_a, "array"_a,
          "Binds coordinates for one instance value of an instance group.")
      .def(
          "set_connectivity",
          [](BoundScene& s, Id mesh, Id array) {
            s.Bind({&mesh, &array}, {{array, ConnectivityRole}}, -1,
                   [&] { s.Scene().setConnectivity(mesh, array); });
          },
          "mesh"_a, "array"_a,
          "Binds uint32 node indices of the cells; the array's Dimension is the nodes per cell.")
      .def(
          "set_connectivity",
          [](BoundScene& s, Id mesh, Id cells, Id polylength) {
            s.Bind({&mesh, &cells, &polylength},
                   {{cells, ConnectivityRole}, {polylength, PolylengthRole}}, -1,
                   [&] { s.Scene().setConnectivity(mesh, cells, polylength); });
          },
          "mesh"_a, "connectivity"_a, "polylength"_a,
          "Binds node indices and the node count of each cell (both uint32).")
      .def(
          "set_connectivity",
          [](BoundScene& s, Id mesh, Id group, py::handle value, Id array) {
            s.Bind({&mesh, &group, &array}, {{array, ConnectivityRole}}, 1, [&] {
              BoundScene::WithValue(
                  value, [&](auto v) { s.Scene().setConnectivity(mesh, group, v, array); });
            });
          },
          "mesh"_a, "group"_a, "value"_a, "array"_a, "Binds node indices for one instance value.")
      .def(
          "set_connectivity",
          [](BoundScene& s, Id mesh, Id group, py::handle value, Id cells, Id polylength) {
            s.Bind({&mesh, &group, &cells, &polylength},
                   {{cells, ConnectivityRole}, {polylength, PolylengthRole}}, 1, [&] {
                     BoundScene::WithValue(value, [&](auto v) {
                       s.Scene().setConnectivity(mesh, group, v, cells, polylength);
                     });
                   });
          },
          "mesh"_a, "group"_a, "value"_a, "connectivity"_a, "polylength"_a,
          "Binds node indices and polylength for one instance value.")
      .def(
          "set_node_indices",
          [](BoundScene& s, Id mesh, Id array) {
            s.Bind({&mesh, &array}, {{array, NodeIdsRole}}, -1,
                   [&] { s.Scene().setNodeIndices(mesh, array); });
          },
          "mesh"_a, "array"_a,
          "Binds uint32 node ids (the file holds them as float32: exact up to 16,777,216).")
      .def(
          "set_node_indices",
          [](BoundScene& s, Id mesh, Id group, py::handle value, Id array) {
            s.Bind({&mesh, &group, &array}, {{array, NodeIdsRole}}, 1, [&] {
              BoundScene::WithValue(
                  value, [&](auto v) { s.Scene().setNodeIndices(mesh, group, v, array); });
            });
          },
          "mesh"_a, "group"_a, "value"_a, "array"_a, "Binds node ids for one instance value.")
      .def(
          "set_element_indices",
          [](BoundScene& s, Id mesh, Id array) {
            s.Bind({&mesh, &array}, {{array, ElementIdsRole}}, -1,
                   [&] { s.Scene().setElementIndices(mesh, array); });
            WarnNotWritten(
                "set_element_indices without an instance value records ids that do not "
                "reach the file; give them per instance value");
          },
          "mesh"_a, "array"_a,
          "Records element ids on a mesh; they reach the file only per instance value.")
      .def(
          "set_element_indices",
          [](BoundScene& s, Id mesh, Id group, py::handle value, Id array) {
            s.Bind({&mesh, &group, &array}, {{array, ElementIdsRole}}, 1, [&] {
              BoundScene::WithValue(
                  value, [&](auto v) { s.Scene().setElementIndices(mesh, group, v, array); });
            });
          },
          "mesh"_a, "group"_a, "value"_a, "array"_a,
          "Binds element ids (float32 or uint32) for one instance value.");
}

void DefineResults(py::class_<BoundScene>& scene) {
  const char* const notWritten =
      "set_result without an instance group records nothing that reaches the file; give "
      "results per instance value";
  scene
      .def(
          "set_result",
          [notWritten](BoundScene& s, Id mesh, const std::string& name, Id array) {
            s.Bind({&mesh, &array}, {}, -1,
                   [&] { s.Scene().setResult(mesh, name.c_str(), array); });
            WarnNotWritten(notWritten);
          },
          "mesh"_a, "name"_a, "array"_a, "Validates; records nothing (see the warning).")
      .def(
          "set_result",
          [notWritten](BoundScene& s, Id mesh, const std::string& name, std::int32_t type,
                       Id array) {
            s.Bind({&mesh, &array}, {{array, ResultRole}}, WidthOf(type),
                   [&] { s.Scene().setResult(mesh, name.c_str(), VariableType(type), array); });
            WarnNotWritten(notWritten);
          },
          "mesh"_a, "name"_a, "variable_type"_a, "array"_a,
          "Sets the array's variable type and width; records nothing (see the warning).")
      .def(
          "set_result",
          [](BoundScene& s, Id mesh, Id group, py::handle value, const std::string& name,
             Id array) {
            s.Bind({&mesh, &group, &array}, {{array, ResultRole}}, -1, [&] {
              BoundScene::WithValue(
                  value, [&](auto v) { s.Scene().setResult(mesh, group, v, name.c_str(), array); });
            });
          },
          "mesh"_a, "group"_a, "value"_a, "name"_a, "array"_a,
          "Records a result (float32 or uint32) for one instance value.")
      .def(
          "set_result",
          [](BoundScene& s, Id mesh, Id group, py::handle value, const std::string& name,
             std::int32_t type, Id array) {
            s.Bind({&mesh, &group, &array}, {{array, ResultRole}}, WidthOf(type), [&] {
              BoundScene::WithValue(value, [&](auto v) {
                s.Scene().setResult(mesh, group, v, name.c_str(), VariableType(type), array);
              });
            });
          },
          "mesh"_a, "group"_a, "value"_a, "name"_a, "variable_type"_a, "array"_a,
          "Records a result of a VariableType (width 1, 3, 6 or 6) for one instance value.")
      .def(
          "add_element_set",
          [](BoundScene& s, Id mesh, Id set) {
            s.Bind({&mesh, &set}, {{set, ElementSetRole}}, -1,
                   [&] { s.Scene().addElementSet(mesh, set); });
          },
          "mesh"_a, "set"_a, "Adds an element set object (uint32 cell numbers) to a mesh.")
      .def(
          "add_element_set",
          [](BoundScene& s, Id mesh, Id group, py::handle value, Id set) {
            s.Bind({&mesh, &group, &set}, {{set, ElementSetRole}}, -1, [&] {
              BoundScene::WithValue(value,
                                    [&](auto v) { s.Scene().addElementSet(mesh, group, v, set); });
            });
          },
          "mesh"_a, "group"_a, "value"_a, "set"_a,
          "Adds an element set for one instance value, under the set object's name.")
      .def(
          "add_element_set",
          [](BoundScene& s, Id mesh, Id group, py::handle value, const std::string& name, Id set) {
            s.Bind({&mesh, &group, &set}, {{set, ElementSetRole}}, -1, [&] {
              BoundScene::WithValue(value, [&](auto v) {
                s.Scene().addElementSet(mesh, group, v, name.c_str(), set);
              });
            });
          },
          "mesh"_a, "group"_a, "value"_a, "name"_a, "set"_a,
          "Adds an element set for one instance value under a name.")
      .def(
          "add_component",
          [](BoundScene& s, Id parent, Id child) { return s.Scene().addComponent(parent, child); },
          "parent"_a, "child"_a, "Adds a component; returns the parent's number of components.")
      .def(
          "add_component",
          [](BoundScene& s, Id parent, Id child, Id transformation) {
            return s.Scene().addComponent(parent, child, transformation);
          },
          "parent"_a, "child"_a, "transformation"_a,
          "Adds a component placed by a transformation object.")
      .def(
          "remove_component",
          [](BoundScene& s, Id parent, std::uint64_t component) {
            s.Scene().removeComponent(parent, component);
          },
          "parent"_a, "component"_a, "Validates the parent; a component once added stays.")
      .def(
          "set_material",
          [](BoundScene& s, Id object, Id material) { s.Scene().setMaterial(object, material); },
          "object"_a, "material"_a, "Gives the component of a shape a material object.");
}

}  // namespace

void RegisterScene(py::module_& module) {
  RegisterTypes(module);
  py::class_<BoundScene> scene(module, "Scene",
                               "A scene of the newest interface version; see dovwriter.Scene.");
  DefineObjects(scene);
  DefineArrays(scene);
  DefineAppearance(scene);
  DefineMeshData(scene);
  DefineResults(scene);
  module.def(
      "log_trace_to_file",
      [](py::handle path) { Kel::Dov::logTraceToFile(FileSystemPath(path).c_str()); }, "path"_a,
      "Writes every progress and failure record of the library to a file.");
}

}  // namespace DovPython
