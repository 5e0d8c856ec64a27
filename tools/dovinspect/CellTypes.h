#ifndef DOVINSPECT_CELLTYPES_H
#define DOVINSPECT_CELLTYPES_H

// How the cells of a model file become VTK cells. A file stores each cell as
// its node count (the "Polylength") and its node indices, and says per
// connectivity variable whether the mesh is made of points, lines or cells.
// It does not say whether a cell of four nodes is a quadrilateral or a
// tetrahedron; the user chooses that with the cell style.

#include <cstdint>
#include <string>
#include <vector>

namespace DovInspect {

enum class CellStyle { Surface, Solid };

// Variable types of a connectivity variable.
const std::uint32_t kPointConnectivity = 4;
const std::uint32_t kLineConnectivity = 5;
const std::uint32_t kCellConnectivity = 6;

// VTK cell type numbers used here.
enum VtkCellType : std::uint8_t {
  kVtkEmptyCell = 0,
  kVtkVertex = 1,
  kVtkPolyVertex = 2,
  kVtkLine = 3,
  kVtkPolyLine = 4,
  kVtkTriangle = 5,
  kVtkPolygon = 7,
  kVtkQuad = 9,
  kVtkTetra = 10,
  kVtkHexahedron = 12,
  kVtkWedge = 13,
  kVtkPyramid = 14
};

std::uint8_t VtkCellTypeFor(std::uint32_t nodeCount, std::uint32_t connectivityType,
                            CellStyle style);

// The mapping above as text for `export --help`.
const char* CellMappingHelp();

// The cells of one mesh in VTK's layout. Node indices stay in the caller's
// connectivity vector; only the first `usedNodes` of them belong to cells.
struct CellLayout {
  std::vector<std::int64_t> offsets;  // end of each cell
  std::vector<std::uint8_t> types;
  std::uint64_t usedNodes = 0;
  std::vector<std::string> warnings;
};

// Builds the layout from a connectivity and its polylength. An empty
// polylength with a non-empty connectivity means one node per cell; both
// empty means one vertex per point, so that a point cloud stays visible.
// Throws ToolError if the polylength asks for more indices than there are,
// or if an index lies outside the points.
CellLayout BuildCells(const std::vector<std::uint32_t>& connectivity,
                      const std::vector<std::uint32_t>& polylength, std::uint32_t connectivityType,
                      std::uint64_t points, CellStyle style);

}  // namespace DovInspect

#endif
