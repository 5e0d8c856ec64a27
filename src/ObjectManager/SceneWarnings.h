#ifndef DOVWRITER_OBJECTMANAGER_SCENEWARNINGS_H
#define DOVWRITER_OBJECTMANAGER_SCENEWARNINGS_H

// The pass that runs when closeFile() starts, for a host with a handler.
// It meets what the walk from the root will meet, in the same order, and
//  - warns of everything there that the file will not hold as the host may
//    expect, one warning per object and cause;
//  - adds up the bytes of numbers that the walk will write, counting a
//    dataset that the builders share once, so that progress has its total
//    before the first byte is written.
// It changes nothing: keys are looked up, never read with a default. Each
// array is scanned at most once, however often the walk meets it.

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "ObjectManager/BuildSupport.h"
#include "ObjectManager/Diagnostics.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

class SceneWarnings {
 public:
  SceneWarnings(const ObjectManager& scene, DiagnosticChannel& channel, std::uint64_t root)
      : scene(scene), channel(channel), root(root) {}

  // Returns the bytes of numbers that the walk will write.
  std::uint64_t run();

 private:
  // A node object to be met, and the shape object whose component it is.
  struct Visit {
    std::uint64_t object;
    std::uint64_t shape;
  };
  // The four arrays of a geometry or mesh object, as the builders read them.
  struct MeshArrays {
    std::uint64_t coordinatesLink, connectivityLink, polylengthLink, nodeIdsLink;
    ArrayView<float> coordinates;
    ArrayView<std::uint32_t> connectivity;
    ArrayView<std::uint32_t> polylength;
    ArrayView<std::uint32_t> nodeIds;
  };
  // The instance group of a mesh object.
  struct PerValue {
    std::uint64_t group = NoObject;
    std::string groupName;
    TextList values;
    TextList names;  // each with its leading mark byte
    // The cells of each value's own polylength, if values have one.
    std::map<std::uint64_t, CellTable> cells;
    bool has(const std::string& name) const;
    std::string at(std::uint64_t j) const { return " at value \"" + values[j] + "\""; }
  };

  // The walk (SceneWarnings.cpp).
  void meet(const Visit& visit, std::vector<Visit>& pending);
  void meetGroup(std::uint64_t index, std::vector<Visit>& pending);
  void meetShape(std::uint64_t index, std::vector<Visit>& pending);
  void meetGeometry(std::uint64_t index);
  bool geometryIsBuilt(std::uint64_t index, bool first);
  void countGeometry(const MeshArrays& arrays);
  void noteMaterial(const Visit& visit);
  void noteElementIds(std::uint64_t index);
  void warnUnreached();

  // Mesh objects (MeshWarnings.cpp). Their bytes are the same at every
  // visit, since the builder shares datasets only within one visit.
  void meetMesh(std::uint64_t index);
  std::uint64_t meshBytes(std::uint64_t index);
  void readPerValue(std::uint64_t mesh, PerValue& perValue);
  void warnPerValue(std::uint64_t mesh, const MeshArrays& arrays, const PerValue& perValue);
  void warnMeshWithoutCells(std::uint64_t mesh, const MeshArrays& arrays, const LinkList& sets,
                            const PerValue& perValue);
  void noteSet(std::uint64_t set, std::uint64_t mesh);
  // The bytes of one element set's per-value variables; `written` holds
  // the keys of the datasets this mesh object has written so far.
  std::uint64_t perValueBytes(std::uint64_t set, const MeshArrays& arrays, const PerValue& perValue,
                              std::set<std::string>& written);

  // Arrays and their checks.
  MeshArrays readArrays(std::uint64_t index);
  // "Array" of `array`, copied or lent, where `role` reads only T: another
  // element type is warned of and reads as empty, as it does for the
  // builders.
  template <class T>
  ArrayView<T> arrayAs(std::uint64_t array, std::uint64_t owner, const std::string& role);
  // "Array" of `array` if it holds T, copied or lent; false otherwise.
  template <class T>
  bool findArray(std::uint64_t array, ArrayView<T>& view) const {
    return Dov::findArray(scene.record(array).properties, view);
  }
  // The values of per-value data: floats or unsigned integers.
  std::uint64_t perValueCount(std::uint64_t array, std::uint64_t mesh, const std::string& role);
  void noteDataArray(std::uint64_t array, std::uint64_t owner, const std::string& role,
                     bool keepsAttributes);
  // `keeps`: the node or variable made from the object keeps attributes.
  void noteAttributes(std::uint64_t index, bool keeps);
  void checkNodeIds(std::uint64_t array, ArrayView<std::uint32_t> ids, std::uint64_t owner);
  void checkNodesInRange(std::uint64_t array, ArrayView<std::uint32_t> connectivity,
                         std::uint64_t nodes, std::uint64_t owner, const std::string& where);

  // A dataset that the builders share across the scene by array object.
  void countShared(std::uint64_t source, std::uint64_t values);

  // Lookups that insert nothing.
  template <class T>
  const T* find(std::uint64_t index, const std::string& key) const {
    return findProperty<T>(scene.record(index).properties, key);
  }
  std::uint64_t link(std::uint64_t index, const std::string& key) const;
  LinkList links(std::uint64_t index, const std::string& key) const;
  std::uint8_t dimension(std::uint64_t index) const;
  const std::string& name(std::uint64_t index) const { return scene.record(index).name; }
  std::string describe(std::uint64_t index) const { return describeObject(scene, index); }
  void warn(WarningCode code, std::uint64_t object, const std::string& text) {
    channel.warn(code, object, text);
  }
  bool firstMeeting(std::uint64_t index) { return examined.insert(index).second; }

  const ObjectManager& scene;
  DiagnosticChannel& channel;
  const std::uint64_t root;
  std::set<std::uint64_t> met;       // every object that the walk reads
  std::set<std::uint64_t> examined;  // node objects whose own warnings are out
  std::set<std::uint64_t> sharedWritten;
  std::map<std::uint64_t, std::uint64_t> meshTotals;
  std::set<std::uint64_t> scannedIds;
  std::map<std::uint64_t, std::uint32_t> largestNodes;
  std::uint64_t total = 0;
};

// The nodes of the cells `cells` lists; cells outside `table`, which the
// check before closing refuses, count none.
std::uint64_t nodesOfCells(ArrayView<std::uint32_t> cells, const CellTable& table);

}  // namespace Dov
}  // namespace Kel

#endif
