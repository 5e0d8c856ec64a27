// Reading: a model file opened with the reader's model layer, its tree
// handed to Python as plain tuples and its values as numpy arrays that own
// their memory. "Heavy Data" is inflated a block at a time, never whole.

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <memory>

#include "Common.h"
#include "Verify.h"
#include "reader/Model.h"

namespace DovPython {

namespace {

const std::uint32_t FloatData = 1;

// The vector becomes the array's own buffer: no copy, freed with the array.
// `Shown` reinterprets the elements, as floats kept in 32-bit words are.
template <class Shown, class Stored>
py::array OwnedArray(std::vector<Stored>&& values, py::ssize_t width = 1) {
  static_assert(sizeof(Shown) == sizeof(Stored), "the elements keep their size");
  auto* held = new std::vector<Stored>(std::move(values));
  py::capsule owner(held, [](void* data) { delete static_cast<std::vector<Stored>*>(data); });
  const auto* data = reinterpret_cast<const Shown*>(held->data());
  const auto rows = static_cast<py::ssize_t>(held->size()) / width;
  const auto size = static_cast<py::ssize_t>(sizeof(Shown));
  if (width == 1) return py::array_t<Shown>({rows}, {size}, data, owner);
  return py::array_t<Shown>({rows, width}, {width * size, size}, data, owner);
}

py::array Words(std::vector<std::uint32_t>&& words, bool floats, py::ssize_t width = 1) {
  return floats ? OwnedArray<float>(std::move(words), width)
                : OwnedArray<std::uint32_t>(std::move(words), width);
}

py::array MatrixArray(const DovReader::Matrix4& matrix) {
  py::array_t<double> array({4, 4});
  std::copy(matrix.begin(), matrix.end(), array.mutable_data());
  return std::move(array);
}

const char* AssociationName(DovReader::Association association) {
  switch (association) {
    case DovReader::Association::Point: return "point";
    case DovReader::Association::Cell: return "cell";
    case DovReader::Association::None: break;
  }
  return nullptr;
}

class Model {
 public:
  explicit Model(py::handle path)
      : model(std::make_unique<DovReader::Model>(FileSystemPath(path))) {}

  void Close() { model.reset(); }

  py::dict Information() const {
    const DovReader::GlobalInformation& info = Open().GetScene().Information();
    py::dict dict;
    dict["version"] = Text(info.version);
    dict["application_name"] = Text(info.applicationName);
    dict["application_version"] = Text(info.applicationVersion);
    dict["format_version"] = Text(info.formatVersion);
    dict["creation_date"] = Text(info.creationDate);
    dict["computer_name"] = Text(info.computerName);
    dict["user_name"] = Text(info.userName);
    dict["comment"] = Text(info.comment);
    return dict;
  }

  // (id, parent, children, type name, name, path) per node, in id order.
  py::list Nodes() const {
    py::list nodes;
    for (const DovReader::ModelNode& node : Open().Nodes())
      nodes.append(py::make_tuple(node.id, node.parent, node.children,
                                  Text(Open().GetScene().Record(node.id).typeName),
                                  Text(node.name), Text(node.path)));
    return nodes;
  }

  // (composed 4x4 matrix, diffuse colour with alpha or None, visible).
  py::tuple Placement(std::uint32_t entryId) const {
    const DovReader::ModelNode& node = Open().Node(entryId);
    py::object color = py::none();
    if (node.hasColor)
      color = py::make_tuple(node.color[0], node.color[1], node.color[2], Alpha(node));
    return py::make_tuple(MatrixArray(node.matrix), color, node.visible);
  }

  // (name, type, data type, width, values, link entry, link index) per
  // variable; the width, data type and count are those of the data that a
  // link leads to, the link fields 0 for a variable that holds its own.
  py::list Variables(std::uint32_t entryId) const {
    const DovReader::Scene& scene = Open().GetScene();
    const DovReader::TreeRecord& record = scene.Record(entryId);
    py::list variables;
    for (std::uint32_t i = 0; i < record.variables.size(); ++i) {
      const DovReader::Variable& own = record.variables[i];
      const DovReader::Variable& data = scene.ResolveVariable(entryId, i);
      variables.append(py::make_tuple(Text(own.name), own.type, data.dataType, data.width,
                                      data.byteSize / 4, own.linked ? own.linkEntryId : 0,
                                      own.linked ? own.linkVariableIndex : 0));
    }
    return variables;
  }

  py::array Read(std::uint32_t entryId, std::uint32_t index) {
    const bool floats = Open().GetScene().ResolveVariable(entryId, index).dataType == FloatData;
    return Words(Open().Values(entryId, static_cast<int>(index)), floats);
  }

  // (name, path, geometry ids) per piece: a mesh's element sets, or a
  // geometry of its own.
  py::list Pieces() const {
    py::list pieces;
    for (const DovReader::ModelPiece& piece : Open().Pieces())
      pieces.append(py::make_tuple(Text(piece.name), Text(piece.path), piece.geometries));
    return pieces;
  }

  // The instance values in step order: (texts, times, whether numeric).
  py::tuple Steps() const {
    const DovReader::TimeAxis& steps = Open().Steps();
    py::list values;
    for (const std::string& value : steps.values) values.append(Text(value));
    return py::make_tuple(values, steps.times, steps.numeric);
  }

  // One piece at a step (-1 for none), with the cells of the element sets
  // at `positions`: its points placed, cells typed, results classified.
  py::dict Piece(std::size_t index, int step, const std::vector<std::size_t>& positions) {
    DovReader::Model& model = Open();
    const DovReader::ModelPiece& piece = model.Pieces().at(index);
    DovReader::PointSet points = model.ReadPoints(piece, step);
    DovReader::CellSet cells =
        model.ReadCells(piece, positions, step, points, DovReader::CellRule::ByShape);
    py::list warnings;
    for (const auto* list : {&points.warnings, &cells.warnings})
      for (const std::string& warning : *list) warnings.append(Text(piece.path + ": " + warning));
    py::list fields;
    for (const DovReader::FieldInfo& field : model.Fields(piece, step)) {
      const char* association = AssociationName(Classify(field, points.Count(), cells.Count()));
      py::object values = py::none();
      if (association != nullptr)
        values = Words(model.Values(field.entryId, field.index), field.isFloat, field.components);
      fields.append(py::make_tuple(Text(field.name), association, values, field.values,
                                   field.components));
    }
    py::dict dict;
    dict["points"] = OwnedArray<float>(std::move(points.xyz), 3);
    dict["node_ids"] = OwnedArray<std::int64_t>(std::move(points.nodeIds));
    dict["connectivity"] = OwnedArray<std::uint32_t>(std::move(cells.connectivity));
    dict["offsets"] = OwnedArray<std::int64_t>(std::move(cells.offsets));
    dict["types"] = OwnedArray<std::uint8_t>(std::move(cells.types));
    dict["element_set"] = OwnedArray<std::int32_t>(std::move(cells.geometry));
    dict["fields"] = fields;
    dict["warnings"] = warnings;
    return dict;
  }

 private:
  DovReader::Model& Open() const {
    if (!model) throw py::value_error("the model file is closed");
    return *model;
  }

  // The model layer gives a colour as red, green and blue; the alpha stays
  // in the record of the shape that gave it, the nearest at or above.
  float Alpha(const DovReader::ModelNode& node) const {
    for (std::uint32_t id = node.id; id != 0; id = Open().Node(id).parent) {
      const DovReader::TreeRecord& record = Open().GetScene().Record(id);
      if (record.material) return record.material->diffuse[3];
    }
    return 1.0f;
  }

  std::unique_ptr<DovReader::Model> model;
};

}  // namespace

void RegisterReading(py::module_& module) {
  py::class_<Model>(module, "Model", "A model file opened for reading; use dovwriter.open.")
      .def(py::init<py::handle>(), py::arg("path"))
      .def("close", &Model::Close)
      .def("information", &Model::Information)
      .def("nodes", &Model::Nodes)
      .def("placement", &Model::Placement, py::arg("entry"))
      .def("variables", &Model::Variables, py::arg("entry"))
      .def("read", &Model::Read, py::arg("entry"), py::arg("index"))
      .def("pieces", &Model::Pieces)
      .def("steps", &Model::Steps)
      .def("piece", &Model::Piece, py::arg("index"), py::arg("step"), py::arg("positions"));
  module.def(
      "verify",
      [](py::handle path) {
        py::list violations;
        for (const std::string& line : DovInspect::VerifyModel(FileSystemPath(path)))
          violations.append(Text(line));
        return violations;
      },
      py::arg("path"), "Every structural violation in the file, one text each; [] when sound.");
}

}  // namespace DovPython
