#include "CellTypes.h"

#include "Cli.h"

namespace DovInspect {

namespace {

std::uint8_t PointCellType(std::uint32_t nodeCount) {
  return nodeCount == 1 ? kVtkVertex : kVtkPolyVertex;
}

std::uint8_t LineCellType(std::uint32_t nodeCount) {
  if (nodeCount == 1) return kVtkVertex;
  return nodeCount == 2 ? kVtkLine : kVtkPolyLine;
}

std::uint8_t SolidCellType(std::uint32_t nodeCount) {
  switch (nodeCount) {
    case 4:
      return kVtkTetra;
    case 5:
      return kVtkPyramid;
    case 6:
      return kVtkWedge;
    case 8:
      return kVtkHexahedron;
    default:
      return kVtkPolygon;
  }
}

std::uint8_t GeneralCellType(std::uint32_t nodeCount, CellStyle style) {
  switch (nodeCount) {
    case 1:
      return kVtkVertex;
    case 2:
      return kVtkLine;
    case 3:
      return kVtkTriangle;
    default:
      break;
  }
  if (style == CellStyle::Solid) return SolidCellType(nodeCount);
  return nodeCount == 4 ? kVtkQuad : kVtkPolygon;
}

void CheckNodeIndices(const std::vector<std::uint32_t>& connectivity, std::uint64_t used,
                      std::uint64_t points) {
  for (std::uint64_t i = 0; i < used; ++i) {
    if (connectivity[i] >= points) {
      throw ToolError("connectivity entry " + std::to_string(i) + " refers to node " +
                      std::to_string(connectivity[i]) + ", but there are only " +
                      std::to_string(points) + " points");
    }
  }
}

}  // namespace

std::uint8_t VtkCellTypeFor(std::uint32_t nodeCount, std::uint32_t connectivityType,
                            CellStyle style) {
  if (nodeCount == 0) return kVtkEmptyCell;
  if (connectivityType == kPointConnectivity) return PointCellType(nodeCount);
  if (connectivityType == kLineConnectivity) return LineCellType(nodeCount);
  return GeneralCellType(nodeCount, style);
}

const char* CellMappingHelp() {
  return "Cells are mapped to VTK cell types by their node count and by the type of\n"
         "their connectivity variable:\n"
         "  point mesh (type 4):  1 node vertex, more nodes poly-vertex\n"
         "  line mesh (type 5):   1 node vertex, 2 nodes line, more nodes poly-line\n"
         "  cell mesh (type 6 and any other type):\n"
         "                        1 node vertex, 2 nodes line, 3 nodes triangle;\n"
         "    with --cells=surface (default): 4 nodes quad, more nodes polygon\n"
         "    with --cells=solid:   4 tetra, 5 pyramid, 6 wedge, 8 hexahedron,\n"
         "                          other counts polygon\n"
         "  a cell of 0 nodes becomes an empty cell.\n"
         "A mesh without connectivity becomes one vertex per point. A connectivity\n"
         "without polylength has one node per cell.\n";
}

CellLayout BuildCells(const std::vector<std::uint32_t>& connectivity,
                      const std::vector<std::uint32_t>& polylength, std::uint32_t connectivityType,
                      std::uint64_t points, CellStyle style) {
  CellLayout layout;
  if (connectivity.empty() && polylength.empty()) {
    layout.offsets.resize(points);
    layout.types.assign(points, kVtkVertex);
    for (std::uint64_t i = 0; i < points; ++i) layout.offsets[i] = static_cast<std::int64_t>(i + 1);
    return layout;
  }
  std::vector<std::uint32_t> ones;
  const std::vector<std::uint32_t>* lengths = &polylength;
  if (polylength.empty()) {
    ones.assign(connectivity.size(), 1);
    lengths = &ones;
  }
  layout.offsets.reserve(lengths->size());
  layout.types.reserve(lengths->size());
  std::uint64_t end = 0;
  for (std::uint32_t count : *lengths) {
    end += count;
    layout.offsets.push_back(static_cast<std::int64_t>(end));
    layout.types.push_back(VtkCellTypeFor(count, connectivityType, style));
  }
  if (end > connectivity.size()) {
    throw ToolError("the polylength asks for " + std::to_string(end) +
                    " node indices, but the connectivity holds " +
                    std::to_string(connectivity.size()));
  }
  if (end < connectivity.size()) {
    layout.warnings.push_back("the last " + std::to_string(connectivity.size() - end) +
                              " connectivity entries belong to no cell and are left out");
  }
  CheckNodeIndices(connectivity, end, points);
  layout.usedNodes = end;
  return layout;
}

}  // namespace DovInspect
