// Mesh objects: one mesh divided into element sets. The mesh becomes a
// group; each set a shape with its own colours and, below it, a geometry
// with the set's slice of the connectivity. Node data is written once, by
// the first set, and linked from all others.

#include "ObjectManager/BuildSupport.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

void ObjectManager::writeMesh(std::uint64_t index) {
  AddGroup(objects[index].name);
  MeshFrame mesh;
  readMeshFrame(index, mesh);
  for (const std::uint64_t set : mesh.elementSets) writeElementSet(mesh, set);
  MoveToParent();
}

void ObjectManager::readMeshFrame(std::uint64_t index, MeshFrame& mesh) {
  mesh.coordinates = readFloatArray(readLink(index, "Coordinates"));
  const std::uint64_t connectivityLink = readLink(index, "Connectivity");
  mesh.connectivity = readIndexArray(connectivityLink);
  const ArrayView<std::uint32_t> polylength = readIndexArray(readLink(index, "Polylength"));
  mesh.instanceGroup = readLink(index, "Instance Group");
  if (mesh.instanceGroup != NoObject) readInstanceGroup(mesh);
  mesh.elementSets = readLinks(index, "Element Sets");

  // Connectivity alone, with the nodes per cell as its dimension, tells a
  // mesh of equal cells.
  const std::uint8_t nodesPerCell =
      connectivityLink != NoObject ? readDimension(connectivityLink) : 0;
  mesh.cells = cellTableOf(polylength, mesh.connectivity, nodesPerCell);
  mesh.nodeIds = readIndexArray(readLink(index, "Node Ids"));

  // Each value with a polylength of its own has cells of its own.
  const std::string polylengthKey = resultKey("Polylength");
  for (const std::string& name : mesh.resultNames) {
    if (name != polylengthKey) continue;
    const LinkList arrays = readLinks(mesh.instanceGroup, name);
    for (std::uint64_t j = 0; j < mesh.values.size(); ++j)
      mesh.valueCells[j] = CellTable::Listed(readIndexArray(linkAt(arrays, j)));
  }
}

void ObjectManager::writeElementSet(MeshFrame& mesh, std::uint64_t set) {
  const std::string setName = objects[set].name;
  CutSet& cut = mesh.setCut;
  if (!mesh.cells.empty()) cutElementSet(readIndexArray(set), mesh.cells, mesh.connectivity, cut);

  std::unique_ptr<KelDov::Shape> shape(new KelDov::Shape(setName));
  shape->material.visible = readFlag(set, "Visibility", true) ? 1 : 0;
  applySetColours(set, addChildNode(std::move(shape))->material);
  AddGeometry(setName);

  // Every set sees all node ids of the mesh, not only those of its cells.
  const bool usesNodeIds = !mesh.cells.empty() || mesh.instanceGroup != NoObject;
  static const std::vector<float> noNodeIds;
  const std::vector<float>& nodeIdValues = usesNodeIds ? mesh.nodeIdFloats() : noNodeIds;
  if (!mesh.cells.empty()) {
    addMeshVariable(mesh, setName + ResultMark + "Connectivity", "Connectivity",
                    KelDov::Geometry::CellConnectivity, Dataset::Of(cut.connectivity));
    addMeshVariable(mesh, setName + ResultMark + "Polylength", "Polylength",
                    KelDov::Geometry::PolygonLengths, Dataset::Of(cut.polylength));
    if (!mesh.coordinates.empty())
      addMeshVariable(mesh, "Coordinates", "Coordinates", KelDov::Geometry::Coordinates,
                      Dataset::Of(mesh.coordinates, 3));
    // The trailing separator in the variable name is part of the format.
    if (!nodeIdValues.empty())
      addMeshVariable(mesh, "Node Ids", std::string("Node Ids") + ResultMark,
                      KelDov::Geometry::ScalarValues, Dataset::Of(nodeIdValues, 1));
  }
  if (mesh.instanceGroup != NoObject) addInstanceValueVariables(mesh, set, nodeIdValues);
  MoveToParent();
  MoveToParent();
}

void ObjectManager::addMeshVariable(MeshFrame& mesh, const std::string& key,
                                    const std::string& name, KelDov::Geometry::VariableType type,
                                    const Dataset& values,
                                    const KelDov::AttributeMap& attributes) {
  const auto found = mesh.meshDatasets.find(key);
  if (found != mesh.meshDatasets.end()) {
    const KelDov::VariableRef target = found->second;
    addVariableOrLink(name, type, values, attributes, &target);
    return;
  }
  mesh.meshDatasets[key] = addVariableOrLink(name, type, values, attributes, nullptr);
}

}  // namespace Dov
}  // namespace Kel
