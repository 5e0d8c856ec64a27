// The check that runs before closeFile() writes its first dataset. It walks
// the same objects that the builders will reach, in the same order, reads
// the same keys without changing anything, and refuses (code 18) what the
// builders could only turn into a wrong file or a crash. Incomplete objects
// that the builders skip in silence are skipped here too. Since nothing has
// been written yet, the host can mend the scene and call closeFile() again.
//
// The walk keeps its own stack rather than recursing, so that a scene of any
// depth is checked in bounded stack space, as the builders build it.

#include <map>
#include <set>
#include <sstream>

#include "Kel/Util/Raise.h"
#include "ObjectManager/BuildSupport.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

namespace {

// The instance group of one mesh object, as far as the check needs it.
struct PerValue {
  std::uint64_t mesh = NoObject;
  std::uint64_t group = NoObject;
  TextList values;
  TextList names;
  std::string at(std::uint64_t j) const { return " at value \"" + values[j] + "\""; }
};

class SceneCheck {
 public:
  explicit SceneCheck(const ObjectManager& scene) : scene(scene) {}

  void checkFrom(std::uint64_t root);

 private:
  // One step of the walk: entering an object, or leaving it once all that
  // its components hold has been checked.
  struct Step {
    std::uint64_t index;
    bool leaving;
    std::uint64_t renamesAtEntry;
  };
  void enter(std::uint64_t index);
  void leave(const Step& step);
  void enterGroup(std::uint64_t index);
  void enterShape(std::uint64_t index);
  // A shape gives its name to its component as it is built (the table keeps
  // it). The check follows on a copy: a set's name picks the lists of cells
  // it is cut by, and those must be the lists that were checked.
  const std::string& nameOf(std::uint64_t index) const {
    const auto found = renamed.find(index);
    return found != renamed.end() ? found->second : scene.record(index).name;
  }
  void rename(std::uint64_t index, const std::string& name);
  void checkGeometry(std::uint64_t index);
  void checkMesh(std::uint64_t index);
  void checkInstanceValues(std::uint64_t mesh, const LinkList& sets);
  // The list under `key` on the group; refused if it misses values.
  LinkList perValueList(const PerValue& data, const std::string& key, const std::string& what) const;
  void checkValueCuts(const PerValue& data, const LinkList& sets,
                      const std::vector<ArrayView<std::uint32_t>>& polylengths);
  // `table` is made once by the caller for all the sets that it cuts.
  void checkCut(std::uint64_t mesh, std::uint64_t set, ArrayView<std::uint32_t> cells,
                const CellTable& table, ArrayView<std::uint32_t> connectivity,
                const std::string& atValue);

  template <class T>
  const T* find(std::uint64_t index, const std::string& key) const {
    return findProperty<T>(scene.record(index).properties, key);
  }
  std::uint64_t link(std::uint64_t index, const std::string& key) const {
    const std::uint64_t* value = find<std::uint64_t>(index, key);
    return value != nullptr ? *value : NoObject;
  }
  LinkList links(std::uint64_t index, const std::string& key) const {
    const LinkList* value = find<LinkList>(index, key);
    return value != nullptr ? *value : LinkList();
  }
  // "Array" as unsigned integers where the builders read nothing else;
  // another element type reads as empty, as it does there.
  ArrayView<std::uint32_t> indexArray(std::uint64_t index) const {
    ArrayView<std::uint32_t> view;
    if (index != NoObject) indicesOf(index, view);
    return view;
  }
  // True if "Array" holds unsigned integers, copied or lent; `view` then
  // shows them.
  bool indicesOf(std::uint64_t index, ArrayView<std::uint32_t>& view) const {
    return findArray(scene.record(index).properties, view);
  }
  // Per-value cutting data must be unsigned integers: a polylength of
  // another type would silently cut every set to nothing.
  ArrayView<std::uint32_t> cuttingArray(std::uint64_t mesh, std::uint64_t array,
                                        const std::string& what) const;
  std::uint8_t dimension(std::uint64_t index) const {
    const unsigned char* value = find<unsigned char>(index, "Dimension");
    return value != nullptr ? *value : 1;
  }
  // Refuses a mesh whose cells cannot be counted: no polylength, and a
  // connectivity of "Dimension" 0.
  void checkCellsCountable(std::uint64_t mesh, ArrayView<std::uint32_t> given,
                           std::uint64_t connectivityLink) const;
  CellTable cellsOf(std::uint64_t mesh, ArrayView<std::uint32_t> given,
                    std::uint64_t connectivityLink) const;

  std::string describe(std::uint64_t index) const {
    std::ostringstream text;
    text << "object " << index << " \"" << scene.record(index).name << "\"";
    return text.str();
  }
  [[noreturn]] void refuse(std::uint64_t index, const std::string& what) const {
    const std::string description = describe(index) + ": " + what;
    KEL_RAISE(18, description.c_str(), "Kel::Dov::ObjectManager::closeFile");
  }

  const ObjectManager& scene;
  std::vector<Step> pending;
  std::set<std::uint64_t> onPath;  // objects whose subtree is being checked
  std::map<std::uint64_t, std::string> renamed;
  std::uint64_t renames = 0;  // names changed so far by the walk
  // Objects found sound, with the count of renames then: while no name
  // changes, a second visit would find the same.
  std::map<std::uint64_t, std::uint64_t> soundAt;
};

void SceneCheck::checkFrom(std::uint64_t root) {
  enter(root);
  while (!pending.empty()) {
    const Step step = pending.back();
    pending.pop_back();
    if (step.leaving)
      leave(step);
    else
      enter(step.index);
  }
}

void SceneCheck::enter(std::uint64_t index) {
  const ObjectType type = scene.record(index).type;
  if (type != GeometryObject && type != ShapeObject && type != GroupObject && type != MeshObject)
    return;
  const auto sound = soundAt.find(index);
  if (sound != soundAt.end() && sound->second == renames) return;
  if (onPath.count(index) != 0)
    refuse(index, "the component links form a cycle through this object");
  onPath.insert(index);
  pending.push_back(Step{index, true, renames});
  switch (type) {
    case GroupObject: enterGroup(index); break;
    case ShapeObject: enterShape(index); break;
    case GeometryObject: checkGeometry(index); break;
    default: checkMesh(index); break;
  }
}

void SceneCheck::leave(const Step& step) {
  onPath.erase(step.index);
  // A subtree that renamed something may check differently next time.
  if (step.renamesAtEntry == renames) soundAt[step.index] = renames;
}

void SceneCheck::enterGroup(std::uint64_t index) {
  // Pushed last to first, so that the components are checked in order.
  const LinkList components = links(index, "Components");
  for (auto component = components.rbegin(); component != components.rend(); ++component)
    pending.push_back(Step{*component, false, 0});
}

void SceneCheck::enterShape(std::uint64_t index) {
  // Only the first component is built; a second one ends the walk after it.
  const LinkList components = links(index, "Components");
  if (components.empty()) return;
  rename(components[0], nameOf(index));
  pending.push_back(Step{components[0], false, 0});
}

void SceneCheck::rename(std::uint64_t index, const std::string& name) {
  if (nameOf(index) == name) return;
  renamed[index] = name;
  ++renames;
}

void SceneCheck::checkGeometry(std::uint64_t index) {
  const auto* meshType = find<KelDov::Geometry::VariableType>(index, "Mesh Type");
  const bool pointMesh = meshType != nullptr && *meshType == KelDov::Geometry::PointConnectivity;
  const std::uint64_t connectivityLink = link(index, "Connectivity");
  if (!links(index, "Element Sets").empty() || link(index, "Coordinates") == NoObject) return;
  if (connectivityLink == NoObject && !pointMesh) return;
  checkCellsCountable(index, indexArray(link(index, "Polylength")), connectivityLink);
}

void SceneCheck::checkCellsCountable(std::uint64_t mesh, ArrayView<std::uint32_t> given,
                                     std::uint64_t connectivityLink) const {
  if (!given.empty() || indexArray(connectivityLink).empty()) return;
  if (dimension(connectivityLink) == 0)
    refuse(mesh, "its connectivity " + describe(connectivityLink) +
                     " has \"Dimension\" 0 and no polylength, so its cells cannot be counted");
}

CellTable SceneCheck::cellsOf(std::uint64_t mesh, ArrayView<std::uint32_t> given,
                              std::uint64_t connectivityLink) const {
  checkCellsCountable(mesh, given, connectivityLink);
  const std::uint8_t nodesPerCell = connectivityLink != NoObject ? dimension(connectivityLink) : 0;
  return cellTableOf(given, indexArray(connectivityLink), nodesPerCell);
}

void SceneCheck::checkMesh(std::uint64_t index) {
  const std::uint64_t connectivityLink = link(index, "Connectivity");
  const ArrayView<std::uint32_t> connectivity = indexArray(connectivityLink);
  // One mesh may have many sets; its table of cells serves them all.
  const CellTable cells = cellsOf(index, indexArray(link(index, "Polylength")), connectivityLink);
  const LinkList sets = links(index, "Element Sets");
  if (!cells.empty())
    for (const std::uint64_t set : sets)
      checkCut(index, set, indexArray(set), cells, connectivity, std::string());
  checkInstanceValues(index, sets);
}

void SceneCheck::checkCut(std::uint64_t mesh, std::uint64_t set, ArrayView<std::uint32_t> cells,
                          const CellTable& table, ArrayView<std::uint32_t> connectivity,
                          const std::string& atValue) {
  const CutFault fault = findCutFault(cells, table, connectivity.size());
  if (!fault.found) return;
  std::ostringstream text;
  text << "element set " << describe(set) << " lists cell " << fault.cell << atValue;
  if (fault.outsidePolylength)
    text << ", but the mesh has " << table.count() << " cells";
  else
    text << ", whose nodes would end at position " << fault.sliceEnd
         << " of a connectivity of " << connectivity.size() << " entries";
  refuse(mesh, text.str());
}

ArrayView<std::uint32_t> SceneCheck::cuttingArray(std::uint64_t mesh, std::uint64_t array,
                                                  const std::string& what) const {
  ArrayView<std::uint32_t> view;
  if (scene.record(array).properties.count("Array") != 0 && !indicesOf(array, view))
    refuse(mesh, what + " is " + describe(array) + ", whose \"Array\" is not of unsigned int");
  return view;
}

void SceneCheck::checkInstanceValues(std::uint64_t mesh, const LinkList& sets) {
  PerValue data;
  data.mesh = mesh;
  data.group = link(mesh, "Instance Group");
  if (data.group == NoObject) return;
  const TextList* values = find<TextList>(data.group, "Values");
  const TextList* names = find<TextList>(data.group, "Result Names");
  if (values == nullptr || values->empty()) return;
  data.values = *values;
  if (names != nullptr) data.names = *names;

  // The polylength per value is read for the mesh even without sets.
  std::vector<ArrayView<std::uint32_t>> polylengths;
  for (const std::string& name : data.names) {
    if (name != resultKey("Polylength")) continue;
    const LinkList list = perValueList(data, name, "the per-value list \"Polylength\"");
    for (std::uint64_t j = 0; j < data.values.size(); ++j)
      polylengths.push_back(cuttingArray(mesh, list[j], "the polylength" + data.at(j)));
  }
  if (sets.empty()) return;
  for (const std::string& name : data.names)
    perValueList(data, name, "the per-value list \"" + name.substr(1) + "\"");
  if (!polylengths.empty()) checkValueCuts(data, sets, polylengths);
}

LinkList SceneCheck::perValueList(const PerValue& data, const std::string& key,
                                  const std::string& what) const {
  const LinkList list = links(data.group, key);
  if (list.size() < data.values.size()) {
    std::ostringstream text;
    text << what << " on instance group " << describe(data.group) << " has " << list.size()
         << " entries, but the group has " << data.values.size() << " values";
    refuse(data.mesh, text.str());
  }
  return list;
}

// With a polylength per value, each set is cut per value from that value's
// connectivity by the cells recorded for it at that value.
void SceneCheck::checkValueCuts(const PerValue& data, const LinkList& sets,
                                const std::vector<ArrayView<std::uint32_t>>& polylengths) {
  const LinkList connectivities =
      perValueList(data, resultKey("Connectivity"), "the per-value list \"Connectivity\"");
  std::vector<CellTable> tables;
  for (const ArrayView<std::uint32_t> polylength : polylengths)
    tables.push_back(CellTable::Listed(polylength));
  for (const std::uint64_t set : sets) {
    const std::string setName = nameOf(set);
    const LinkList cellLists = perValueList(data, elementSetKey(setName),
                                            "the per-value cells of element set \"" + setName + "\"");
    for (std::uint64_t j = 0; j < data.values.size(); ++j) {
      const ArrayView<std::uint32_t> connectivity =
          cuttingArray(data.mesh, connectivities[j], "the connectivity" + data.at(j));
      const ArrayView<std::uint32_t> cells = cuttingArray(
          data.mesh, cellLists[j], "the cells of element set \"" + setName + "\"" + data.at(j));
      checkCut(data.mesh, cellLists[j], cells, tables[j], connectivity, data.at(j));
    }
  }
}

}  // namespace

void ObjectManager::checkSceneForClose() const {
  SceneCheck check(*this);
  check.checkFrom(root);
}

}  // namespace Dov
}  // namespace Kel
