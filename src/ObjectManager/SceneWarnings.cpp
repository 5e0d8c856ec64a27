// The warning pass for groups, shapes and geometry objects, the checks of
// arrays that all builders share, and the pass's entry from closeFile().

#include "ObjectManager/SceneWarnings.h"

#include <algorithm>
#include <typeinfo>

#include "ObjectManager/ElementTypes.h"

namespace Kel {
namespace Dov {

namespace {

const char* elementTypeName(const boost::any& value) {
#define DOVWRITER_NAME_IF_HELD(T) \
  if (value.type() == typeid(std::vector<T>) || value.type() == typeid(ArrayView<T>)) return #T;
  DOVWRITER_FOR_EACH_SHARED_ARRAY_TYPE(DOVWRITER_NAME_IF_HELD)
#undef DOVWRITER_NAME_IF_HELD
  return "unknown";
}

template <class T>
const char* readableAs();
template <>
const char* readableAs<float>() {
  return "float";
}
template <>
const char* readableAs<std::uint32_t>() {
  return "unsigned int";
}

const char* nodeKind(ObjectType type) {
  switch (type) {
    case GroupObject: return "a group object";
    case ShapeObject: return "a shape object";
    case GeometryObject: return "a geometry object";
    case MeshObject: return "a mesh object";
    default: return nullptr;
  }
}

// The names that the binding setters give to array objects themselves.
bool isBindingName(const std::string& name) {
  return name.empty() || name == "Coordinates" || name == "Connectivity" || name == "Polylength" ||
         name == "Node Ids" || name == "Element Ids";
}

}  // namespace

std::uint64_t ObjectManager::warnBeforeClose() {
  if (!diagnostics.active()) return 0;
  // A closeFile() after a refused one tells again what still stands.
  diagnostics.forgetWarnings();
  SceneWarnings pass(*this, diagnostics, root);
  return pass.run();
}

std::uint64_t nodesOfCells(ArrayView<std::uint32_t> cells, const CellTable& table) {
  std::uint64_t nodes = 0;
  for (const std::uint32_t cell : cells)
    if (cell < table.count()) nodes += table.length(cell);
  return nodes;
}

std::uint64_t SceneWarnings::run() {
  // Depth first in component order, as the builders go, without recursion:
  // the walk may be as deep as the host's tree.
  std::vector<Visit> pending{Visit{root, NoObject}};
  while (!pending.empty()) {
    const Visit visit = pending.back();
    pending.pop_back();
    meet(visit, pending);
  }
  warnUnreached();
  return total;
}

void SceneWarnings::meet(const Visit& visit, std::vector<Visit>& pending) {
  const std::uint64_t index = visit.object;
  met.insert(index);
  noteMaterial(visit);
  const ObjectType type = scene.record(index).type;
  if (visit.shape != NoObject && !name(index).empty() && name(index) != name(visit.shape))
    warn(WarningCode::NameNotKept, index,
         describe(index) + " is the component of shape " + describe(visit.shape) +
             ", whose name its node takes: the name \"" + name(index) + "\" is not kept");
  switch (type) {
    case GroupObject: meetGroup(index, pending); break;
    case ShapeObject: meetShape(index, pending); break;
    case GeometryObject: meetGeometry(index); break;
    case MeshObject: meetMesh(index); break;
    default:
      warn(WarningCode::SkippedObject, index,
           describe(index) + " stands in the tree as " +
               (index == root ? std::string("the root") : std::string("a component")) +
               ", but its type " + std::to_string(type) +
               " builds nothing (only group, shape, geometry and mesh objects do): it is "
               "left out");
  }
}

void SceneWarnings::meetGroup(std::uint64_t index, std::vector<Visit>& pending) {
  // The root group keeps all its attributes; other groups only "visible".
  if (firstMeeting(index) && index != root) noteAttributes(index, false);
  const LinkList components = links(index, "Components");
  const LinkList transformations = links(index, "Transformations");
  for (std::size_t i = components.size(); i-- > 0;) {
    const std::uint64_t transformation = linkAt(transformations, i);
    if (transformation != NoObject && met.insert(transformation).second)
      noteAttributes(transformation, false);
    pending.push_back(Visit{components[i], NoObject});
  }
}

void SceneWarnings::meetShape(std::uint64_t index, std::vector<Visit>& pending) {
  const LinkList components = links(index, "Components");
  if (firstMeeting(index)) {
    noteAttributes(index, false);
    if (components.size() > 1)
      warn(WarningCode::ExtraComponent, index,
           describe(index) + " is a shape object with " + std::to_string(components.size()) +
               " components, but a shape has one: closeFile builds the first and then fails "
               "with code 13");
  }
  if (!components.empty()) pending.push_back(Visit{components[0], index});
}

void SceneWarnings::noteMaterial(const Visit& visit) {
  const std::uint64_t material = link(visit.object, "Material");
  if (material == NoObject) return;
  if (visit.shape == NoObject) {
    warn(WarningCode::UnusedMaterial, visit.object,
         describe(visit.object) + " has the material " + describe(material) +
             ", but only the component of a shape object takes one: it does not reach the file");
    return;
  }
  if (!met.insert(material).second) return;
  if (!name(material).empty())
    warn(WarningCode::NameNotKept, material,
         describe(material) + " is a material: the file keeps its diffuse colour, not its name");
  noteAttributes(material, false);
}

void SceneWarnings::meetGeometry(std::uint64_t index) {
  const bool first = firstMeeting(index);
  if (!geometryIsBuilt(index, first)) return;
  const MeshArrays arrays = readArrays(index);
  if (first) {
    noteAttributes(index, false);
    noteElementIds(index);
    const std::uint64_t group = link(index, "Instance Group");
    if (group != NoObject)
      warn(WarningCode::UnusedData, index,
           describe(index) + " has data per instance value on " + describe(group) +
               ", which only a mesh object reads: none of it reaches the file");
    checkNodeIds(arrays.nodeIdsLink, arrays.nodeIds, index);
    checkNodesInRange(arrays.connectivityLink, arrays.connectivity, arrays.coordinates.size() / 3,
                      index, "");
  }
  countGeometry(arrays);
}

bool SceneWarnings::geometryIsBuilt(std::uint64_t index, bool first) {
  const auto* meshType = find<KelDov::Geometry::VariableType>(index, "Mesh Type");
  const bool pointMesh = meshType != nullptr && *meshType == KelDov::Geometry::PointConnectivity;
  std::string why;
  if (!links(index, "Element Sets").empty())
    why = "it has element sets, and only a mesh object divides into element sets";
  else if (link(index, "Coordinates") == NoObject)
    why = "it has no coordinates";
  else if (link(index, "Connectivity") == NoObject && !pointMesh)
    why = "it has no connectivity, which only a point mesh (setMeshType PointMesh) may lack";
  if (why.empty()) return true;
  if (first)
    warn(WarningCode::SkippedObject, index,
         describe(index) + ", a geometry object, is left out of the file: " + why);
  return false;
}

void SceneWarnings::countGeometry(const MeshArrays& arrays) {
  // As writeGeometry writes: each array object once in the scene, and a
  // polylength derived from the connectivity under the polylength's link.
  std::uint64_t polylength = arrays.polylength.size();
  if (polylength == 0 && !arrays.connectivity.empty()) {
    const std::uint8_t width = dimension(arrays.connectivityLink);
    polylength = width != 0 ? arrays.connectivity.size() / width : 0;
  }
  countShared(arrays.connectivityLink, arrays.connectivity.size());
  countShared(arrays.polylengthLink, polylength);
  countShared(arrays.coordinatesLink, arrays.coordinates.size());
  countShared(arrays.nodeIdsLink, arrays.nodeIds.size());
}

void SceneWarnings::countShared(std::uint64_t source, std::uint64_t values) {
  if (values == 0) return;
  if (source == NoObject || sharedWritten.insert(source).second) total += 4 * values;
}

void SceneWarnings::noteElementIds(std::uint64_t index) {
  const std::uint64_t elementIds = link(index, "Element Ids");
  if (elementIds == NoObject) return;
  met.insert(elementIds);
  warn(WarningCode::UnusedData, index,
       describe(index) + " has element ids (" + describe(elementIds) +
           ") bound without an instance value: only element ids given per value reach the "
           "file");
}

void SceneWarnings::warnUnreached() {
  for (std::uint64_t index = 0; index < scene.objectCount(); ++index) {
    const char* kind = nodeKind(scene.record(index).type);
    if (kind == nullptr || met.count(index) != 0) continue;
    warn(WarningCode::SkippedObject, index,
         describe(index) + ", " + kind + ", is not reached from the root " + describe(root) +
             " through components: nothing of it reaches the file");
  }
}

SceneWarnings::MeshArrays SceneWarnings::readArrays(std::uint64_t index) {
  MeshArrays arrays;
  arrays.coordinatesLink = link(index, "Coordinates");
  arrays.connectivityLink = link(index, "Connectivity");
  arrays.polylengthLink = link(index, "Polylength");
  arrays.nodeIdsLink = link(index, "Node Ids");
  for (const auto& bound : {std::make_pair(arrays.coordinatesLink, "the coordinates"),
                            std::make_pair(arrays.connectivityLink, "the connectivity"),
                            std::make_pair(arrays.polylengthLink, "the polylength"),
                            std::make_pair(arrays.nodeIdsLink, "the node ids")})
    noteDataArray(bound.first, index, bound.second, false);
  arrays.coordinates = arrayAs<float>(arrays.coordinatesLink, index, "the coordinates");
  arrays.connectivity = arrayAs<std::uint32_t>(arrays.connectivityLink, index, "the connectivity");
  arrays.polylength = arrayAs<std::uint32_t>(arrays.polylengthLink, index, "the polylength");
  arrays.nodeIds = arrayAs<std::uint32_t>(arrays.nodeIdsLink, index, "the node ids");
  return arrays;
}

template <class T>
ArrayView<T> SceneWarnings::arrayAs(std::uint64_t array, std::uint64_t owner,
                                    const std::string& role) {
  ArrayView<T> values;
  if (array == NoObject) return values;
  met.insert(array);
  const PropertyMap& properties = scene.record(array).properties;
  const auto found = properties.find("Array");
  if (found == properties.end() || viewOf(found->second, values)) return values;
  warn(WarningCode::ElementType, array,
       describe(array) + " holds " + elementTypeName(found->second) + " values as " + role +
           " of " + describe(owner) + ", which reads them only as " + readableAs<T>() +
           ": they read as absent and do not reach the file");
  return values;
}

std::uint64_t SceneWarnings::perValueCount(std::uint64_t array, std::uint64_t mesh,
                                           const std::string& role) {
  if (array == NoObject) return 0;
  ArrayView<float> floats;
  if (findArray(array, floats)) return floats.size();
  ArrayView<std::uint32_t> indices;
  if (findArray(array, indices)) return indices.size();
  // Neither: warned of, read as empty.
  return arrayAs<float>(array, mesh, role).size();
}

void SceneWarnings::noteDataArray(std::uint64_t array, std::uint64_t owner, const std::string& role,
                                  bool keepsAttributes) {
  if (array == NoObject) return;
  noteAttributes(array, keepsAttributes);
  if (isBindingName(name(array))) return;
  warn(WarningCode::NameNotKept, array,
       describe(array) + " serves as " + role + " of " + describe(owner) +
           ", and variables are named by their role: the name \"" + name(array) + "\" is not kept");
}

void SceneWarnings::noteAttributes(std::uint64_t index, bool keeps) {
  std::string lost;
  for (const auto& attribute : scene.record(index).attributes) {
    if (keeps && !KelDov::IsDroppedAttributeKey(attribute.first)) continue;
    lost += (lost.empty() ? "" : ", ") + attribute.first;
  }
  if (lost.empty()) return;
  warn(WarningCode::AttributesNotKept, index,
       describe(index) + " has attributes that the file does not keep (" + lost + "): " +
           (keeps ? "no variable keeps these keys"
                  : "only the root group and the arrays of per-value data keep attributes"));
}

void SceneWarnings::checkNodeIds(std::uint64_t array, ArrayView<std::uint32_t> ids,
                                 std::uint64_t owner) {
  if (ids.empty() || !scannedIds.insert(array).second) return;
  std::uint64_t inexact = 0;
  std::uint32_t first = 0;
  for (const std::uint32_t id : ids)
    if (static_cast<double>(static_cast<float>(id)) != id && inexact++ == 0) first = id;
  if (inexact == 0) return;
  warn(WarningCode::InexactNodeId, array,
       describe(array) + " holds " + std::to_string(inexact) + " node ids of " + describe(owner) +
           " that a 32-bit float does not hold exactly, the first " + std::to_string(first) +
           ": the file keeps node ids as floats, so they read back "
           "rounded");
}

void SceneWarnings::checkNodesInRange(std::uint64_t array, ArrayView<std::uint32_t> connectivity,
                                      std::uint64_t nodes, std::uint64_t owner,
                                      const std::string& where) {
  // Without any coordinates there is no range to hold the nodes to.
  if (connectivity.empty() || nodes == 0) return;
  auto largest = largestNodes.find(array);
  if (largest == largestNodes.end()) {
    std::uint32_t highest = 0;
    for (const std::uint32_t node : connectivity) highest = std::max(highest, node);
    largest = largestNodes.emplace(array, highest).first;
  }
  if (largest->second < nodes) return;
  warn(WarningCode::NodeOutsideCoordinates, array,
       describe(array) + ", the connectivity of " + describe(owner) + where + ", names node " +
           std::to_string(largest->second) + ", but the coordinates hold " + std::to_string(nodes) +
           " nodes");
}

std::uint64_t SceneWarnings::link(std::uint64_t index, const std::string& key) const {
  const std::uint64_t* value = find<std::uint64_t>(index, key);
  return value != nullptr ? *value : NoObject;
}

LinkList SceneWarnings::links(std::uint64_t index, const std::string& key) const {
  const LinkList* value = find<LinkList>(index, key);
  return value != nullptr ? *value : LinkList();
}

std::uint8_t SceneWarnings::dimension(std::uint64_t index) const {
  const unsigned char* value = find<unsigned char>(index, "Dimension");
  return value != nullptr ? *value : 1;
}

template ArrayView<float> SceneWarnings::arrayAs<float>(std::uint64_t, std::uint64_t,
                                                        const std::string&);
template ArrayView<std::uint32_t> SceneWarnings::arrayAs<std::uint32_t>(std::uint64_t,
                                                                        std::uint64_t,
                                                                        const std::string&);

}  // namespace Dov
}  // namespace Kel
