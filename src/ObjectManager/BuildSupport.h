#ifndef DOVWRITER_OBJECTMANAGER_BUILDSUPPORT_H
#define DOVWRITER_OBJECTMANAGER_BUILDSUPPORT_H

// Pieces shared by the tree builders and the check that runs before them:
// how a mesh is cut into element sets, how derived data is made, and how
// variables are named. Nothing here touches the tree or the file.

#include <boost/any.hpp>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Kel/Dov/Geometry.h"
#include "ObjectManager/ArrayView.h"
#include "ObjectManager/ObjectManager.h"

namespace Kel {
namespace Dov {

// Prefixes of recorded names: 0x1E before a per-value data name, 0x1D before
// an element set name. The separator is also the glue of variable names.
const char ResultMark = '\x1E';
const char ElementSetMark = '\x1D';

// The key of per-value data of `name` on an instance group.
inline std::string resultKey(const std::string& name) { return ResultMark + name; }
inline std::string elementSetKey(const std::string& name) { return ElementSetMark + name; }

// `name` 0x1E `group` " = " `value`: the variable of `name` at one instance
// value.
inline std::string valueName(const std::string& name, const std::string& group,
                             const std::string& value) {
  return name + ResultMark + group + " = " + value;
}

// The values of one variable as they go to the writer. The arrays belong
// to the caller (mostly the object table, or the host that lent them) and
// are not copied.
struct Dataset {
  enum class Kind { None, Floats, Indices };
  Kind kind = Kind::None;
  ArrayView<float> floats;
  ArrayView<std::uint32_t> indices;
  std::uint8_t width = 1;

  static Dataset Of(ArrayView<float> values, std::uint8_t width) {
    Dataset dataset;
    dataset.kind = Kind::Floats;
    dataset.floats = values;
    dataset.width = width;
    return dataset;
  }
  static Dataset Of(ArrayView<std::uint32_t> values, std::uint8_t width = 1) {
    Dataset dataset;
    dataset.kind = Kind::Indices;
    dataset.indices = values;
    dataset.width = width;
    return dataset;
  }
  // A variable without data: type 0, width 1, nothing to write.
  static Dataset None() { return Dataset(); }

  bool HasData() const { return kind != Kind::None; }
  KelDov::NumericArray Describe() const;
};

// The element set cut out of a mesh: one polylength entry per listed cell,
// and the cells' node indices one slice after the other.
struct CutSet {
  std::vector<std::uint32_t> connectivity;
  std::vector<std::uint32_t> polylength;
};

// Why a cell of an element set cannot be cut out of its mesh; without a
// fault, how many node indices the cut holds.
struct CutFault {
  bool found = false;
  std::uint64_t position = 0;  // in the set's list of cells
  std::uint32_t cell = 0;
  bool outsidePolylength = false;  // else: the slice runs past the connectivity
  std::uint64_t sliceEnd = 0;
  std::uint64_t nodes = 0;
};

// Cells of `dimension` nodes each, as many as fit in `connectivity`.
std::vector<std::uint32_t> derivePolylength(ArrayView<std::uint32_t> connectivity,
                                            std::uint8_t dimension);

// How many nodes each cell of a mesh has and where its slice of the
// connectivity starts (in wrapping 32-bit sums, as a reader adds them up).
// A mesh of equal cells needs no table for that: both follow from the cell
// number, so a mesh of millions of cells is cut without arrays as large as
// its connectivity. A polylength gets its offsets summed once.
class CellTable {
 public:
  CellTable() = default;
  // `cells` cells of `nodesPerCell` nodes each.
  static CellTable Equal(std::uint64_t cells, std::uint32_t nodesPerCell);
  // The cells of `polylength`, whose values must outlive the table.
  static CellTable Listed(ArrayView<std::uint32_t> polylength);

  std::uint64_t count() const { return listed ? polylength.size() : cells; }
  bool empty() const { return count() == 0; }
  std::uint32_t length(std::uint64_t cell) const {
    return listed ? polylength[cell] : nodesPerCell;
  }
  std::uint32_t offset(std::uint64_t cell) const {
    return listed ? offsets[cell] : static_cast<std::uint32_t>(cell * nodesPerCell);
  }

 private:
  bool listed = false;
  ArrayView<std::uint32_t> polylength;
  std::vector<std::uint32_t> offsets;  // of a listed polylength only
  std::uint64_t cells = 0;
  std::uint32_t nodesPerCell = 0;
};

// The cells of a mesh: those of its polylength if it has one, else equal
// cells of `dimension` nodes, as many as fit in `connectivity`.
CellTable cellTableOf(ArrayView<std::uint32_t> polylength, ArrayView<std::uint32_t> connectivity,
                      std::uint8_t dimension);
CutFault findCutFault(ArrayView<std::uint32_t> cells, const CellTable& table,
                      std::uint64_t connectivityCount);
// The set's cells cut out of the mesh. The check before the walk refuses
// every set that findCutFault() faults; should one come here all the same,
// it is refused (code 18) rather than read outside the arrays.
CutSet cutElementSet(ArrayView<std::uint32_t> cells, const CellTable& table,
                     ArrayView<std::uint32_t> connectivity);
// The same into `cut`, whose room is reused.
void cutElementSet(ArrayView<std::uint32_t> cells, const CellTable& table,
                   ArrayView<std::uint32_t> connectivity, CutSet& cut);
// Node ids become floats by value: exact up to 2^24, rounded above.
std::vector<float> idsToFloats(ArrayView<std::uint32_t> ids);

// What one writeMesh() call knows about its mesh object.
struct MeshFrame {
  ArrayView<float> coordinates;
  ArrayView<std::uint32_t> connectivity;
  CellTable cells;  // from the polylength, or equal cells
  ArrayView<std::uint32_t> nodeIds;
  // The cut of the set in hand. Kept from set to set, so that the sets of a
  // large mesh fill memory that is already there instead of fresh pages.
  CutSet setCut;
  LinkList elementSets;

  std::uint64_t instanceGroup = NoObject;
  std::string groupName;
  TextList values;
  TextList resultNames;
  // Per value position: the cells of that value's own polylength.
  std::map<std::uint64_t, CellTable> valueCells;

  // Which variable of this mesh holds the dataset of a key.
  std::map<std::string, KelDov::VariableRef> meshDatasets;

  std::string nameAt(const std::string& name, std::uint64_t position) const {
    return valueName(name, groupName, values[position]);
  }

  // All node ids of the mesh as floats. Every set sees the same ids, so they
  // are converted once, at the first set that needs them, and not again for
  // each of the (many) sets of a large mesh.
  const std::vector<float>& nodeIdFloats() {
    if (!nodeIdsConverted) nodeIdFloatValues = idsToFloats(nodeIds);
    nodeIdsConverted = true;
    return nodeIdFloatValues;
  }
  std::vector<float> nodeIdFloatValues;
  bool nodeIdsConverted = false;
};

// The held T under `key`, without inserting anything; null if the key is
// absent or holds another type.
template <class T>
const T* findProperty(const PropertyMap& properties, const std::string& key) {
  auto found = properties.find(key);
  return found == properties.end() ? nullptr : boost::any_cast<T>(&found->second);
}

// True if "Array" among `properties` holds T, copied or lent; `view` then
// shows the values.
template <class T>
bool findArray(const PropertyMap& properties, ArrayView<T>& view) {
  const auto found = properties.find("Array");
  return found != properties.end() && viewOf(found->second, view);
}

// Entry `position` of a link list, or NoObject past its end.
inline std::uint64_t linkAt(const LinkList& links, std::uint64_t position) {
  return position < links.size() ? links[position] : NoObject;
}

}  // namespace Dov
}  // namespace Kel

#endif
