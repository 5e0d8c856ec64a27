// Data that differs from one instance value to the next. It is recorded on
// an instance group as named lists of array objects, entry j of each list
// standing for entry j of "Values". Each pair of name and value becomes one
// variable of every element set's geometry.

#include "ObjectManager/BuildSupport.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

namespace {

const KelDov::AttributeMap NoAttributes;

}  // namespace

void ObjectManager::readInstanceGroup(MeshFrame& mesh) {
  const std::uint64_t group = mesh.instanceGroup;
  mesh.groupName = objects[group].name;
  const TextList* values = readProperty<TextList>(group, "Values", TextList());
  if (values != nullptr) mesh.values = *values;
  const TextList* names = readProperty<TextList>(group, "Result Names", TextList());
  if (names != nullptr) mesh.resultNames = *names;
}

std::map<std::string, std::vector<std::uint32_t>> ObjectManager::cutPerValue(
    const MeshFrame& mesh, const std::string& setName) {
  std::map<std::string, std::vector<std::uint32_t>> cuts;
  if (mesh.valueCells.empty()) return cuts;
  const LinkList connectivities = readLinks(mesh.instanceGroup, resultKey("Connectivity"));
  // With a polylength per value the contents of a set are per value too.
  const LinkList cellLists = readLinks(mesh.instanceGroup, elementSetKey(setName));
  for (std::uint64_t j = 0; j < mesh.values.size(); ++j) {
    CutSet cut = cutElementSet(readIndexArray(linkAt(cellLists, j)), mesh.valueCells.at(j),
                               readIndexArray(linkAt(connectivities, j)));
    cuts[mesh.nameAt("Connectivity", j)] = std::move(cut.connectivity);
    cuts[mesh.nameAt("Polylength", j)] = std::move(cut.polylength);
  }
  return cuts;
}

Dataset ObjectManager::readValueArray(std::uint64_t array, KelDov::Geometry::VariableType& type) {
  if (array == NoObject) return Dataset::None();
  // Floats or unsigned integers, copied or lent; any other element type
  // gives a variable without data. An object without "Array" reads as
  // empty floats.
  readProperty<std::vector<float>>(array, "Array", {});
  const boost::any& held = objects[array].properties["Array"];
  ArrayView<float> floats;
  ArrayView<std::uint32_t> indices;
  const bool isFloats = viewOf(held, floats);
  const bool isIndices = !isFloats && viewOf(held, indices);
  const std::uint8_t width = readDimension(array);
  const KelDov::Geometry::VariableType* typeRead = readProperty<KelDov::Geometry::VariableType>(
      array, "Variable Type", KelDov::Geometry::ScalarValues);
  if (typeRead != nullptr) type = *typeRead;
  if (isFloats) return Dataset::Of(floats, width);
  if (isIndices) return Dataset::Of(indices, width);
  Dataset none = Dataset::None();
  none.width = width;  // kept for a cut, which always has data
  return none;
}

void ObjectManager::addInstanceValueVariables(MeshFrame& mesh, std::uint64_t set,
                                              const std::vector<float>& nodeIdValues) {
  const std::map<std::string, std::vector<std::uint32_t>> cuts =
      cutPerValue(mesh, objects[set].name);

  for (const std::string& entry : mesh.resultNames) {
    const std::string name = entry.substr(1);
    const LinkList arrays = readLinks(mesh.instanceGroup, entry);
    for (std::uint64_t j = 0; j < mesh.values.size(); ++j) {
      const std::uint64_t array = linkAt(arrays, j);
      const std::string variable = mesh.nameAt(name, j);
      KelDov::Geometry::VariableType type = KelDov::Geometry::ScalarValues;
      const Dataset values = readValueArray(array, type);
      const KelDov::AttributeMap& attributes =
          array == NoObject ? NoAttributes : objects[array].attributes;

      // Cut data belongs to this set alone: always a dataset of its own.
      const auto cut = cuts.find(variable);
      if (cut != cuts.end()) {
        mesh.meshDatasets[variable] =
            addVariableOrLink(variable, type, Dataset::Of(cut->second, values.width), attributes,
                              nullptr);
        continue;
      }
      addMeshVariable(mesh, variable, variable, type, values, attributes);
    }
  }

  // Every value has coordinates and node ids; the mesh object's own win over
  // any given per value, under the same names.
  for (std::uint64_t j = 0; j < mesh.values.size() && !mesh.coordinates.empty(); ++j)
    addMeshVariable(mesh, "Coordinates", mesh.nameAt("Coordinates", j),
                    KelDov::Geometry::Coordinates, Dataset::Of(mesh.coordinates, 3));
  for (std::uint64_t j = 0; j < mesh.values.size() && !nodeIdValues.empty(); ++j)
    addMeshVariable(mesh, "Node Ids", mesh.nameAt("Node Ids", j), KelDov::Geometry::ScalarValues,
                    Dataset::Of(nodeIdValues, 1));
}

}  // namespace Dov
}  // namespace Kel
