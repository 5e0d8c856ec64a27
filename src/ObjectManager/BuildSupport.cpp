#include "ObjectManager/BuildSupport.h"

#include <sstream>

#include "Kel/Util/Raise.h"
#include "Platform/Platform.h"

namespace Kel {
namespace Dov {

KelDov::NumericArray Dataset::Describe() const {
  KelDov::NumericArray array;
  if (kind == Kind::Floats) {
    array.dataType = KelDov::DataTypeFloat;
    array.byteSize = 4 * floats.size();
    if (!floats.empty()) array.data = reinterpret_cast<const unsigned char*>(floats.data());
  } else if (kind == Kind::Indices) {
    array.dataType = KelDov::DataTypeUnsigned;
    array.byteSize = 4 * indices.size();
    if (!indices.empty()) array.data = reinterpret_cast<const unsigned char*>(indices.data());
  }
  array.width = HasData() ? width : 1;
  return array;
}

std::vector<std::uint32_t> derivePolylength(ArrayView<std::uint32_t> connectivity,
                                            std::uint8_t dimension) {
  // A dimension of 0 is refused before construction starts; it counts no
  // cells here rather than dividing by zero.
  if (dimension == 0) return std::vector<std::uint32_t>();
  return std::vector<std::uint32_t>(connectivity.size() / dimension, dimension);
}

CellTable CellTable::Equal(std::uint64_t cells, std::uint32_t nodesPerCell) {
  CellTable table;
  table.cells = cells;
  table.nodesPerCell = nodesPerCell;
  return table;
}

CellTable CellTable::Listed(ArrayView<std::uint32_t> polylength) {
  CellTable table;
  table.listed = true;
  table.polylength = polylength;
  Platform::ReserveForFilling(table.offsets, polylength.size());
  std::uint32_t sum = 0;
  for (const std::uint32_t length : polylength) {
    table.offsets.push_back(sum);
    sum += length;
  }
  return table;
}

CellTable cellTableOf(ArrayView<std::uint32_t> polylength, ArrayView<std::uint32_t> connectivity,
                      std::uint8_t dimension) {
  if (!polylength.empty()) return CellTable::Listed(polylength);
  return CellTable::Equal(dimension != 0 ? connectivity.size() / dimension : 0, dimension);
}

CutFault findCutFault(ArrayView<std::uint32_t> cells, const CellTable& table,
                      std::uint64_t connectivityCount) {
  CutFault fault;
  for (std::uint64_t i = 0; i < cells.size(); ++i) {
    const std::uint32_t cell = cells[i];
    const bool outside = cell >= table.count();
    const std::uint64_t end =
        outside ? 0 : static_cast<std::uint64_t>(table.offset(cell)) + table.length(cell);
    if (outside || end > connectivityCount) {
      fault.found = true;
      fault.position = i;
      fault.cell = cell;
      fault.outsidePolylength = outside;
      fault.sliceEnd = end;
      return fault;
    }
    fault.nodes += table.length(cell);
  }
  return fault;
}

CutSet cutElementSet(ArrayView<std::uint32_t> cells, const CellTable& table,
                     ArrayView<std::uint32_t> connectivity) {
  CutSet cut;
  cutElementSet(cells, table, connectivity, cut);
  return cut;
}

void cutElementSet(ArrayView<std::uint32_t> cells, const CellTable& table,
                   ArrayView<std::uint32_t> connectivity, CutSet& cut) {
  cut.connectivity.clear();
  cut.polylength.clear();
  const CutFault fault = findCutFault(cells, table, connectivity.size());
  if (fault.found) {
    std::ostringstream text;
    text << "An element set lists cell " << fault.cell << ", which lies outside its mesh";
    KEL_RAISE(18, text.str().c_str(), "Kel::Dov::ObjectManager::writeMesh");
  }
  // Sized up front: grown piece by piece, a large set would be copied over
  // and over into fresh memory.
  Platform::ReserveForFilling(cut.connectivity, static_cast<std::size_t>(fault.nodes));
  Platform::ReserveForFilling(cut.polylength, cells.size());
  for (const std::uint32_t cell : cells) {
    const std::uint32_t length = table.length(cell);
    const auto start = connectivity.begin() + table.offset(cell);
    cut.polylength.push_back(length);
    cut.connectivity.insert(cut.connectivity.end(), start, start + length);
  }
}

std::vector<float> idsToFloats(ArrayView<std::uint32_t> ids) {
  std::vector<float> floats;
  Platform::ReserveForFilling(floats, ids.size());
  floats.assign(ids.begin(), ids.end());
  return floats;
}

}  // namespace Dov
}  // namespace Kel
