// Geometry objects: one mesh without element sets or results. Each array
// object is written once per scene; every later use of it, under any name
// and in any geometry, links to that first variable.

#include "ObjectManager/BuildSupport.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

typedef KelDov::Geometry::VariableType VariableKind;

void ObjectManager::writeGeometry(std::uint64_t index) {
  const std::uint64_t coordinatesLink = readLink(index, "Coordinates");
  const std::uint64_t nodeIdsLink = readLink(index, "Node Ids");
  const std::uint64_t connectivityLink = readLink(index, "Connectivity");
  const std::uint64_t polylengthLink = readLink(index, "Polylength");
  const LinkList elementSets = readLinks(index, "Element Sets");
  const VariableKind* typeRead =
      readProperty<VariableKind>(index, "Mesh Type", KelDov::Geometry::CellConnectivity);
  const VariableKind meshType = typeRead != nullptr ? *typeRead : KelDov::Geometry::CellConnectivity;

  // Incomplete objects, and those given element sets (which only a mesh
  // object can use), drop out of the scene without a word.
  if (!elementSets.empty() || coordinatesLink == NoObject) return;
  if (connectivityLink == NoObject && meshType != KelDov::Geometry::PointConnectivity) return;

  AddGeometry(objects[index].name);
  const ArrayView<float> coordinates = readFloatArray(coordinatesLink);
  const ArrayView<std::uint32_t> nodeIds = readIndexArray(nodeIdsLink);
  const ArrayView<std::uint32_t> connectivity = readIndexArray(connectivityLink);
  ArrayView<std::uint32_t> polylength = readIndexArray(polylengthLink);

  // Connectivity alone, with the nodes per cell as its dimension, tells a
  // mesh of equal cells.
  std::vector<std::uint32_t> derived;
  if (polylength.empty() && !connectivity.empty()) {
    derived = derivePolylength(connectivity, readDimension(connectivityLink));
    polylength = derived;
  }

  if (!connectivity.empty())
    addSharedVariable("Connectivity", meshType, Dataset::Of(connectivity), connectivityLink);
  if (!polylength.empty())
    addSharedVariable("Polylength", KelDov::Geometry::PolygonLengths, Dataset::Of(polylength),
                      polylengthLink);
  if (!coordinates.empty())
    addSharedVariable("Coordinates", KelDov::Geometry::Coordinates, Dataset::Of(coordinates, 3),
                      coordinatesLink);
  if (!nodeIds.empty()) {
    const std::vector<float> ids = idsToFloats(nodeIds);
    addSharedVariable("Node Ids", KelDov::Geometry::ScalarValues, Dataset::Of(ids, 1), nodeIdsLink);
  }
  MoveToParent();
}

KelDov::VariableRef ObjectManager::addVariableOrLink(const std::string& name, VariableKind type,
                                                     const Dataset& values,
                                                     const KelDov::AttributeMap& attributes,
                                                     const KelDov::VariableRef* target) {
  std::uint64_t offset = 0;
  if (target == nullptr && values.kind == Dataset::Kind::Floats)
    offset = WriteStreamDataset(values.floats.data(), values.floats.size(), values.width);
  else if (target == nullptr && values.kind == Dataset::Kind::Indices)
    offset = WriteStreamDataset(values.indices.data(), values.indices.size(), values.width);

  const KelDov::NumericArray described = values.Describe();
  if (progress != nullptr && target == nullptr && values.HasData())
    progress->datasetWritten(offset + described.byteSize);
  const KelDov::VariableRef added = AddVariable(name, type, offset, described, attributes);
  if (target != nullptr) LinkVariable(added, *target);
  return added;
}

void ObjectManager::addSharedVariable(const std::string& name, VariableKind type,
                                      const Dataset& values, std::uint64_t source) {
  // Values without an array object of their own (a derived polylength) are
  // neither shared nor linked.
  if (source == NoObject) {
    addVariableOrLink(name, type, values, KelDov::AttributeMap(), nullptr);
    return;
  }
  const auto found = sharedDatasets.find(source);
  if (found != sharedDatasets.end()) {
    const KelDov::VariableRef target = found->second;
    addVariableOrLink(name, type, values, KelDov::AttributeMap(), &target);
    return;
  }
  sharedDatasets[source] = addVariableOrLink(name, type, values, KelDov::AttributeMap(), nullptr);
}

}  // namespace Dov
}  // namespace Kel
