// Reading: a model file opened with our reader, its records handed to
// Python as plain tuples and its values as numpy arrays that own their
// memory. "Heavy Data" is inflated a block at a time, never as a whole.

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <memory>

#include "Common.h"
#include "Reading.h"
#include "SceneView.h"
#include "Verify.h"

namespace DovPython {

namespace {

const std::uint32_t FloatData = 1;

// The words become the array's own buffer: no copy, freed with the array.
template <class T>
py::array OwnedArray(std::vector<std::uint32_t>&& words) {
  static_assert(sizeof(T) == sizeof(std::uint32_t), "a value is one 32-bit word");
  auto* held = new std::vector<std::uint32_t>(std::move(words));
  py::capsule owner(held,
                    [](void* data) { delete static_cast<std::vector<std::uint32_t>*>(data); });
  return py::array_t<T>({static_cast<py::ssize_t>(held->size())}, {sizeof(T)},
                        reinterpret_cast<const T*>(held->data()), owner);
}

py::array MatrixArray(const Matrix4& matrix) {
  py::array_t<double> array({4, 4});
  std::copy(matrix.begin(), matrix.end(), array.mutable_data());
  return std::move(array);
}

class Model {
 public:
  explicit Model(py::handle path)
      : file(std::make_unique<DovInspect::ModelFile>(FileSystemPath(path))) {}

  void Close() { file.reset(); }

  py::dict Information() const {
    const DovReader::GlobalInformation& info = Open().Scene().Information();
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

  // (id, parent, first child, next sibling, type name, name) per entry.
  py::list Records() const {
    py::list records;
    for (const DovReader::TreeRecord& r : Open().Scene().Records())
      records.append(py::make_tuple(r.id, r.parent, r.firstChild, r.nextSibling, Text(r.typeName),
                                    Text(r.name)));
    return records;
  }

  // (composed 4x4 matrix, diffuse colour or None, visible).
  py::tuple Placement(std::uint32_t entryId) const {
    const DovReader::Scene& scene = Open().Scene();
    const Appearance appearance = AppearanceOf(scene, entryId);
    py::object color = py::none();
    if (appearance.color) color = py::cast(*appearance.color);
    return py::make_tuple(MatrixArray(ComposedMatrix(scene, entryId)), color, appearance.visible);
  }

  // (name, type, data type, width, values, link entry, link index) per
  // variable; the width, data type and count are those of the data that a
  // link leads to, the link fields 0 for a variable that holds its own.
  py::list Variables(std::uint32_t entryId) const {
    const DovReader::Scene& scene = Open().Scene();
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
    const bool floats = Open().Scene().ResolveVariable(entryId, index).dataType == FloatData;
    std::vector<std::uint32_t> words = Open().Words(entryId, index);
    return floats ? OwnedArray<float>(std::move(words))
                  : OwnedArray<std::uint32_t>(std::move(words));
  }

 private:
  DovInspect::ModelFile& Open() const {
    if (!file) throw py::value_error("the model file is closed");
    return *file;
  }

  std::unique_ptr<DovInspect::ModelFile> file;
};

}  // namespace

void RegisterReading(py::module_& module) {
  py::class_<Model>(module, "Model", "A model file opened for reading; use dovwriter.open.")
      .def(py::init<py::handle>(), py::arg("path"))
      .def("close", &Model::Close)
      .def("information", &Model::Information)
      .def("records", &Model::Records)
      .def("placement", &Model::Placement, py::arg("entry"))
      .def("variables", &Model::Variables, py::arg("entry"))
      .def("read", &Model::Read, py::arg("entry"), py::arg("index"));
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
