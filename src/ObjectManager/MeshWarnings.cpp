// The warning pass for mesh objects: the element sets that carry a mesh
// into the file, and the data it has per instance value. The bytes follow
// writeMesh: a dataset per key, shared by the sets of one visit, and the
// cuts of an element set always of its own.

#include "ObjectManager/SceneWarnings.h"

namespace Kel {
namespace Dov {

bool SceneWarnings::PerValue::has(const std::string& name) const {
  for (const std::string& entry : names)
    if (entry == resultKey(name)) return true;
  return false;
}

void SceneWarnings::meetMesh(std::uint64_t index) { total += meshBytes(index); }

std::uint64_t SceneWarnings::meshBytes(std::uint64_t index) {
  const auto known = meshTotals.find(index);
  if (known != meshTotals.end()) return known->second;
  std::uint64_t& bytes = meshTotals[index];
  firstMeeting(index);
  noteAttributes(index, false);
  noteElementIds(index);
  const MeshArrays arrays = readArrays(index);
  PerValue perValue;
  readPerValue(index, perValue);
  const LinkList sets = links(index, "Element Sets");
  if (sets.empty()) {
    if (arrays.coordinatesLink != NoObject || arrays.connectivityLink != NoObject ||
        arrays.nodeIdsLink != NoObject || perValue.group != NoObject)
      warn(WarningCode::UnusedData, index,
           describe(index) +
               " is a mesh object without element sets: its data reaches the "
               "file only through them, so none of it is written");
    return bytes;
  }

  const std::uint8_t nodesPerCell =
      arrays.connectivityLink != NoObject ? dimension(arrays.connectivityLink) : 0;
  const CellTable cells = cellTableOf(arrays.polylength, arrays.connectivity, nodesPerCell);
  if (!cells.empty() || perValue.group != NoObject)
    checkNodeIds(arrays.nodeIdsLink, arrays.nodeIds, index);
  checkNodesInRange(arrays.connectivityLink, arrays.connectivity, arrays.coordinates.size() / 3,
                    index, "");
  warnPerValue(index, arrays, perValue);
  if (cells.empty()) warnMeshWithoutCells(index, arrays, sets, perValue);

  std::set<std::string> written;
  auto add = [&](const std::string& key, std::uint64_t values) {
    if (written.insert(key).second) bytes += 4 * values;
  };
  for (const std::uint64_t set : sets) {
    noteSet(set, index);
    const ArrayView<std::uint32_t> setCells =
        arrayAs<std::uint32_t>(set, index, "the cells of an element set");
    if (!cells.empty()) {
      add(name(set) + ResultMark + "Connectivity", nodesOfCells(setCells, cells));
      add(name(set) + ResultMark + "Polylength", setCells.size());
      if (!arrays.coordinates.empty()) add("Coordinates", arrays.coordinates.size());
      if (!arrays.nodeIds.empty()) add("Node Ids", arrays.nodeIds.size());
    }
    if (perValue.group != NoObject) bytes += perValueBytes(set, arrays, perValue, written);
  }
  return bytes;
}

void SceneWarnings::readPerValue(std::uint64_t mesh, PerValue& perValue) {
  perValue.group = link(mesh, "Instance Group");
  if (perValue.group == NoObject) return;
  met.insert(perValue.group);
  noteAttributes(perValue.group, false);
  perValue.groupName = name(perValue.group);
  if (const TextList* values = find<TextList>(perValue.group, "Values")) perValue.values = *values;
  if (const TextList* names = find<TextList>(perValue.group, "Result Names"))
    perValue.names = *names;
  if (!perValue.has("Polylength")) return;
  const LinkList lengths = links(perValue.group, resultKey("Polylength"));
  for (std::uint64_t j = 0; j < perValue.values.size(); ++j)
    perValue.cells[j] = CellTable::Listed(
        arrayAs<std::uint32_t>(linkAt(lengths, j), mesh, "the polylength" + perValue.at(j)));
}

void SceneWarnings::warnPerValue(std::uint64_t mesh, const MeshArrays& arrays,
                                 const PerValue& perValue) {
  for (const std::string& entry : perValue.names) {
    const LinkList list = links(perValue.group, entry);
    for (std::uint64_t j = 0; j < perValue.values.size(); ++j) {
      const std::string role = "\"" + entry.substr(1) + "\"" + perValue.at(j);
      noteDataArray(linkAt(list, j), mesh, role, true);
      perValueCount(linkAt(list, j), mesh, role);
    }
  }
  // The mesh object's own coordinates and node ids stand for every value.
  for (const auto& own : {std::make_pair("Coordinates", !arrays.coordinates.empty()),
                          std::make_pair("Node Ids", !arrays.nodeIds.empty())})
    if (own.second && perValue.has(own.first))
      warn(WarningCode::UnusedData, mesh,
           describe(mesh) + " has " + own.first +
               " of its own, which stand for every value: "
               "the " +
               own.first + " given per value are not used");
  if (!perValue.has("Connectivity")) return;
  const LinkList connectivities = links(perValue.group, resultKey("Connectivity"));
  const LinkList coordinates = links(perValue.group, resultKey("Coordinates"));
  for (std::uint64_t j = 0; j < perValue.values.size(); ++j) {
    const std::uint64_t connectivity = linkAt(connectivities, j);
    ArrayView<std::uint32_t> nodes;
    if (connectivity == NoObject || !findArray(connectivity, nodes)) continue;
    ArrayView<float> points = arrays.coordinates;
    if (points.empty() && linkAt(coordinates, j) != NoObject &&
        !findArray(linkAt(coordinates, j), points))
      continue;
    checkNodesInRange(connectivity, nodes, points.size() / 3, mesh, perValue.at(j));
  }
}

void SceneWarnings::warnMeshWithoutCells(std::uint64_t mesh, const MeshArrays& arrays,
                                         const LinkList& sets, const PerValue& perValue) {
  // With a polylength per value the sets are cut per value instead.
  if (perValue.cells.empty()) {
    for (const std::uint64_t set : sets) {
      ArrayView<std::uint32_t> listed;
      if (!findArray(set, listed) || listed.empty()) continue;
      warn(WarningCode::CellOutsideMesh, set,
           describe(set) + ", an element set of " + describe(mesh) + ", lists " +
               std::to_string(listed.size()) +
               " cells, but the mesh has no cells (no connectivity to cut them from): the set "
               "gets none of them");
    }
  }
  if (perValue.values.empty() && (!arrays.coordinates.empty() || !arrays.nodeIds.empty()))
    warn(WarningCode::UnusedData, mesh,
         describe(mesh) +
             " has no cells, so its element sets get no geometry: its coordinates "
             "and node ids are not written");
}

void SceneWarnings::noteSet(std::uint64_t set, std::uint64_t mesh) {
  met.insert(set);
  noteAttributes(set, false);
  const std::uint64_t material = link(set, "Material");
  if (material == NoObject) return;
  warn(WarningCode::UnusedMaterial, set,
       describe(set) + ", an element set of " + describe(mesh) + ", has the material " +
           describe(material) +
           ", which element sets do not read: a set takes its colours from setColor on itself");
}

std::uint64_t SceneWarnings::perValueBytes(std::uint64_t set, const MeshArrays& arrays,
                                           const PerValue& perValue,
                                           std::set<std::string>& written) {
  std::uint64_t bytes = 0;
  auto add = [&](const std::string& key, std::uint64_t values) {
    if (written.insert(key).second) bytes += 4 * values;
  };
  // With a polylength per value, each set has its own cut at every value.
  std::vector<std::uint64_t> cutCells, cutNodes;
  if (!perValue.cells.empty()) {
    const LinkList cellLists = links(perValue.group, elementSetKey(name(set)));
    for (std::uint64_t j = 0; j < perValue.values.size(); ++j) {
      const ArrayView<std::uint32_t> cells =
          arrayAs<std::uint32_t>(linkAt(cellLists, j), set, "its cells" + perValue.at(j));
      cutCells.push_back(cells.size());
      cutNodes.push_back(nodesOfCells(cells, perValue.cells.at(j)));
    }
  }
  for (const std::string& entry : perValue.names) {
    const std::string dataName = entry.substr(1);
    const bool cut = !cutCells.empty() && (dataName == "Connectivity" || dataName == "Polylength");
    const LinkList list = links(perValue.group, entry);
    for (std::uint64_t j = 0; j < perValue.values.size(); ++j) {
      const std::string variable = valueName(dataName, perValue.groupName, perValue.values[j]);
      if (cut) {
        written.insert(variable);
        bytes += 4 * (dataName == "Connectivity" ? cutNodes[j] : cutCells[j]);
      } else if (written.count(variable) == 0) {
        add(variable, perValueCount(linkAt(list, j), set, variable));
      }
    }
  }
  // Every value has the mesh object's coordinates and node ids.
  if (!perValue.values.empty() && !arrays.coordinates.empty())
    add("Coordinates", arrays.coordinates.size());
  if (!perValue.values.empty() && !arrays.nodeIds.empty()) add("Node Ids", arrays.nodeIds.size());
  return bytes;
}

}  // namespace Dov
}  // namespace Kel
